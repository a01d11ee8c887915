#include "platform/tree/tree_service.h"

#include "platform/host/file_lock.h"
#include "platform/tree/tree_machine.h"
#include "platform/tree/tree_service_start.h"

#include <csignal>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype ConfigFixedBytes = 64;

/// What the configuration takes in the block that the classic query fills.
qsizetype byteSize(const ServiceConfig& config)
{
    const auto text = [](const QString& each) { return 2 * (each.size() + 1); };
    qsizetype size = ConfigFixedBytes + text(config.binaryPath) + text(config.loadOrderGroup)
        + text(config.displayName) + text(u"LocalSystem"_s) + 2;
    for (const QString& each : config.dependencies)
        size += text(each);
    return size;
}

} // namespace

TreeService::TreeService(TreeMachine& machine, QString name, quint32 rights)
    : m_machine(machine)
    , m_database(machine)
    , m_name(std::move(name))
    , m_rights(rights)
{
}

TreeService::~TreeService()
{
    if (!m_deleting)
        return;
    const auto lock = ServiceFolder::lockServices(ServiceFolder::parent(m_machine.paths()));
    // A service that runs is removed by its host when it ends.
    if (lock && folder().current().status.currentState == service_state::Stopped)
        m_database.removeIfMarked(m_name, folder());
}

Status TreeService::need(quint32 right) const
{
    return m_rights & right ? Status() : Status(Error{error::AccessDenied, m_name});
}

ServiceFolder TreeService::folder() const
{
    return ServiceFolder(m_machine.paths(), m_name);
}

Result<ServiceStatus> TreeService::queryStatus()
{
    if (Status allowed = need(service_access::QueryStatus); !allowed)
        return allowed.failure();
    return serviceStatus(m_machine, m_name);
}

Result<ServiceConfig> TreeService::queryConfig(qsizetype limitBytes)
{
    if (Status allowed = need(service_access::QueryConfig); !allowed)
        return allowed.failure();
    Result<ServiceConfig> config = m_database.config(m_name);
    if (config && byteSize(*config) > limitBytes)
        return Error{error::InsufficientBuffer, m_name};
    return config;
}

Status TreeService::start()
{
    if (Status allowed = need(service_access::Start); !allowed)
        return allowed;
    return startWithDependencies(m_machine, m_name);
}

Result<ServiceStatus> TreeService::control(quint32 code)
{
    // Every right to send a control code has a code of its own; the console sends one alone.
    if (code != ServiceControlStop)
        return Error{error::InvalidServiceControl, m_name};
    if (Status allowed = need(service_access::Stop); !allowed)
        return allowed.failure();
    const Result<HostFolder> parent = ServiceFolder::parent(m_machine.paths());
    // Where nothing was ever started only drivers run, and there is nothing to lock.
    if (!parent)
        return stop();
    const auto lock = ServiceFolder::lockServices(*parent);
    return lock ? stop() : Result<ServiceStatus>(lock.failure());
}

Result<ServiceStatus> TreeService::stop()
{
    const bool isDriver = m_database.isSystemDriver(m_name);
    ServiceRecord record = folder().current();
    if (!isDriver && record.status.currentState == service_state::Stopped)
        return Error{error::ServiceNotActive, m_name};
    const bool hasHost = record.host && record.host->isAlive();
    // A host that was killed before it passed a stop on leaves it pending: it is asked for once more.
    const bool isForgotten = record.status.currentState == service_state::StopPending && !hasHost;
    if (!isDriver && record.status.currentState != service_state::Running
        && record.status.currentState != service_state::Paused && !isForgotten)
        return Error{error::ServiceCannotAcceptControl, m_name};
    for (const QString& each : m_database.dependents(m_name))
        if (serviceStatus(m_machine, each).currentState != service_state::Stopped)
            return Error{error::DependentServicesRunning, each};
    if (isDriver)
        return Error{error::InvalidServiceControl, m_name};
    if (Status asked = folder().askStop(); !asked)
        return asked.failure();
    // The host passes it on. A service whose host was killed is asked here; its end shows by itself.
    if (!hasHost && record.service)
        record.service->signal(SIGTERM);
    record.status.currentState = service_state::StopPending;
    return record.status;
}

Status TreeService::changeConfig(const ServiceConfigChange& change)
{
    if (Status allowed = need(service_access::ChangeConfig); !allowed)
        return allowed;
    return m_database.change(m_name, change);
}

Status TreeService::markForDelete()
{
    if (Status allowed = need(service_access::Delete); !allowed)
        return allowed;
    const Result<HostFolder> parent = ServiceFolder::makeParent(m_machine.paths());
    if (!parent)
        return parent.failure();
    const auto lock = ServiceFolder::lockServices(*parent);
    if (!lock)
        return lock.failure();
    if (Status marked = m_database.markForDelete(m_name); !marked)
        return marked;
    if (const auto made = ServiceFolder::make(m_machine.paths(), m_name))
        m_deleting.emplace(made->place(u"delete"));
    return {};
}

} // namespace quoril
