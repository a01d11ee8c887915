#pragma once

#include "platform/services.h"

namespace quoril {

class TreeMachine;

/// An open connection to the service manager of a tree.
class TreeServiceManager : public ServiceManager
{
public:
    /// The machine is not owned and lives longer.
    TreeServiceManager(TreeMachine& machine, quint32 rights) : m_machine(machine), m_rights(rights) { }

    Result<std::unique_ptr<Service>> openService(QStringView name, quint32 access) override;
    Status createService(const NewService& service) override;
    Result<std::unique_ptr<ServiceDatabaseLock>> lockDatabase() override;
    Result<ServiceLockStatus> queryLockStatus(const QueryBlock& block) override;

private:
    TreeMachine& m_machine;
    quint32 m_rights;
};

} // namespace quoril
