#pragma once

#include "shell/service_catalogue.h"

#include <QJsonObject>
#include <QString>

#include <optional>
#include <vector>

namespace quoril {

struct Ctl;

/// The instances of the machine in force.
class Instances
{
public:
    /// Reads them; a catalogue that can't be read is reported and counts as a failure.
    bool read(Ctl& ctl, CatalogueScan scan = CatalogueScan::WithoutDevices);

    std::vector<ServiceInfo>& all() { return m_services; }

    /// The instance of that name, case counting only where two names differ by nothing else. Null, and
    /// reported, if there is none.
    ServiceInfo* find(Ctl& ctl, const QString& name);
    /// The same, and nothing is reported.
    ServiceInfo* lookUp(const QString& name);
    /// The instances of the names, without a name all of them. None, and reported, if one isn't there.
    std::optional<std::vector<ServiceInfo*>> select(Ctl& ctl, const QStringList& names);

private:
    std::vector<ServiceInfo> m_services; // in the registry's order
};

/// The words of a state ("running", "start-pending") and of a start type ("automatic"); "unknown" for any
/// other number.
QString stateWord(quint32 currentState);
QString startTypeWord(qint32 startType);
/// All of these words but "unknown".
QStringList stateWords();
QStringList startTypeWords();
/// The number of the start type that a word names, in any case.
std::optional<qint32> startTypeOf(QStringView word);

/// The services that have to run before this one; none where its configuration can't be read.
QStringList prerequisitesOf(const ServiceInfo& service);

/// Asks for state and start type; a start type that can't be read is -1 afterwards. False, with the failure
/// in the record, if the state can't be read.
bool askState(ServiceInfo& service);

/// Reports the failure of the last operation on an instance: the exit code for that.
int instanceFailure(Ctl& ctl, const ServiceInfo& service);

/// Asks for the state of the instances and prints it: an object for one that is named alone, else an array.
int printStatus(Ctl& ctl, const std::vector<ServiceInfo*>& services, bool single);

} // namespace quoril
