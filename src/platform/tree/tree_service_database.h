#pragma once

#include "formats/error.h"
#include "platform/services.h"
#include "platform/tree/tree_processes.h"

#include <QString>
#include <QStringView>

namespace quoril {

class ServiceFolder;
class TreeMachine;

/// The services of a tree as its registry has them, the keys below CurrentControlSet\Services. What is
/// changed here is seen by the registry and the reverse.
class TreeServiceDatabase
{
public:
    /// The machine is not owned and lives longer.
    explicit TreeServiceDatabase(TreeMachine& machine) : m_machine(machine) { }

    /// 123 for a text that can't name a service, 1060 if there is none.
    Status check(QStringView name) const;

    /// The service's name as it is stored; the text itself if there is none.
    QString storedName(QStringView name) const;

    /// The services that need this one.
    QStringList dependents(QStringView name) const;

    /// The services of a group, which is written as a dependency, "+NDIS".
    QStringList members(QStringView group) const;
    /// Whether it is a driver that comes up with the system. No process of the host stands for it: it runs
    /// as long as the machine is there.
    bool isSystemDriver(QStringView name) const;

    /// 1060 if there is none.
    Result<ServiceConfig> config(QStringView name) const;
    /// In one change of the hive. 1059 where the service would depend on itself, be it through others.
    Status change(QStringView name, const ServiceConfigChange& change);
    /// 1073, 1072, 1059, 87, 123.
    Status create(const NewService& service);

    /// Whether it is marked for deletion. Errors as check().
    Result<bool> deleteMark(QStringView name) const;
    bool isMarkedForDelete(QStringView name) const;
    Status markForDelete(QStringView name);
    /// Removes a service that is marked, and its folder first: what is gone has left nothing.
    void removeIfMarked(QStringView name, const ServiceFolder& folder);

    /// The program of the host that the configuration's path stands for: 2, 3, 5, 123, and 193 for a driver
    /// and for what is no program of the host.
    Result<TreeProcesses::Program> program(const ServiceConfig& config) const;

private:
    /// Whether a service with these dependencies would depend on itself.
    bool needsItself(QStringView name, const QStringList& dependencies) const;

    TreeMachine& m_machine;
};

} // namespace quoril
