#pragma once

#include "platform/host/file_lock.h"
#include "platform/services.h"
#include "platform/tree/tree_service_database.h"
#include "platform/tree/tree_service_state.h"

#include <optional>

namespace quoril {

class TreeMachine;

/// An open service of a tree. It may be used by one thread at a time, as many as there are by many.
class TreeService : public Service
{
public:
    /// The machine is not owned and lives longer.
    TreeService(TreeMachine& machine, QString name, quint32 rights);
    ~TreeService() override;
    TreeService(const TreeService&) = delete;
    TreeService& operator=(const TreeService&) = delete;

    Result<ServiceStatus> queryStatus() override;
    Result<ServiceConfig> queryConfig(qsizetype limitBytes) override;
    Status start() override;
    Result<ServiceStatus> control(quint32 code) override;
    Status changeConfig(const ServiceConfigChange& change) override;
    Status markForDelete() override;

private:
    Status need(quint32 right) const;
    Result<ServiceStatus> stop();
    ServiceFolder folder() const;

    TreeMachine& m_machine;
    TreeServiceDatabase m_database;
    QString m_name;
    quint32 m_rights;
    std::optional<TryLock> m_deleting; // held while this handle keeps a service that is to go
};

} // namespace quoril
