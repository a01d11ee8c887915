#include "platform/tree/tree_service_start.h"

#include "formats/name_case.h"
#include "platform/terminal.h"
#include "platform/tree/tree_machine.h"
#include "platform/tree/tree_service_database.h"
#include "platform/tree/tree_service_host.h"
#include "platform/tree/tree_service_state.h"

#include <QHash>

#include <algorithm>
#include <optional>
#include <vector>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr quint32 PollMilliseconds = 20;
// A host ends a service that is silent for 30 seconds; this one is for a service that has lost its host.
constexpr quint32 LongestSilenceMilliseconds = 35000;

bool isGroup(const QString& dependency)
{
    return dependency.startsWith(u'+');
}

/// A service that came up, whatever it did since but stop.
bool isUp(const ServiceStatus& status)
{
    return status.currentState == service_state::Running || status.currentState == service_state::Paused
        || status.currentState == service_state::PausePending
        || status.currentState == service_state::ContinuePending;
}

/// A walk over what a service depends on, down to what the caller takes for up. It keeps its own stack: a
/// registry may hold a chain of any length.
class DependencyWalk
{
public:
    explicit DependencyWalk(TreeMachine& machine) : m_machine(machine), m_database(machine) { }

    /// What has to be started, each after what it needs itself; without the service itself.
    Status plan(const QString& service, const QStringList& needed);

    const QStringList& order() const { return m_order; }
    /// Whether the service can't start without this one, which is so for all but members of groups.
    bool isVital(const QString& service) const { return m_vital.value(upcase(service)); }

private:
    struct Edge
    {
        QString name;
        bool isMember; // of a group
    };
    struct Visit
    {
        QString name;
        bool isVital;
        std::vector<Edge> edges;
        std::size_t next = 0;
    };

    Status enter(const Edge& edge, bool isVital);
    void push(const QString& name, bool isVital, const QStringList& needed);
    Error missing(const QString& name) const;

    TreeMachine& m_machine;
    TreeServiceDatabase m_database;
    std::vector<Visit> m_stack;
    QHash<QString, bool> m_isOpen; // by the name in upper case; of those that were met
    QHash<QString, bool> m_vital;
    QStringList m_order;
};

Status DependencyWalk::plan(const QString& service, const QStringList& needed)
{
    push(service, true, needed);
    while (!m_stack.empty()) {
        Visit& visit = m_stack.back();
        if (visit.next < visit.edges.size()) {
            const Edge edge = visit.edges[visit.next++];
            if (Status entered = enter(edge, visit.isVital && !edge.isMember); !entered)
                return entered;
            continue;
        }
        m_isOpen[upcase(visit.name)] = false;
        if (m_stack.size() > 1)
            m_order.append(visit.name);
        m_stack.pop_back();
    }
    return {};
}

Status DependencyWalk::enter(const Edge& edge, bool isVital)
{
    if (const auto met = m_isOpen.constFind(upcase(edge.name)); met != m_isOpen.constEnd())
        return *met ? Status(Error{error::CircularDependency, edge.name}) : Status();
    const Result<ServiceConfig> config = m_database.config(edge.name);
    if (!config || m_database.isMarkedForDelete(edge.name))
        return edge.isMember ? Status() : missing(edge.name);
    if (isUp(serviceStatus(m_machine, edge.name)))
        return {};
    if (config->startType == start_type::Disabled)
        return edge.isMember ? Status() : Error{error::ServiceDependencyFail, edge.name};
    push(edge.name, isVital, config->dependencies);
    return {};
}

void DependencyWalk::push(const QString& name, bool isVital, const QStringList& needed)
{
    Visit visit{name, isVital, {}};
    for (const QString& each : needed) {
        if (!isGroup(each))
            visit.edges.push_back({each, false});
        else
            for (const QString& member : m_database.members(each))
                visit.edges.push_back({member, true});
    }
    m_isOpen.insert(upcase(name), true);
    m_vital.insert(upcase(name), isVital);
    m_stack.push_back(std::move(visit));
}

Error DependencyWalk::missing(const QString& name) const
{
    // The service that is to start reports itself what it lacks; one further down just fails to start.
    return {m_stack.size() == 1 ? error::ServiceDependencyDeleted : error::ServiceDependencyFail, name};
}

/// Waits until a service that starts is up or has given up.
bool comesUp(TreeMachine& machine, QStringView service)
{
    Clock& clock = machine.clock();
    quint64 lastSign = clock.tickCount();
    for (ServiceStatus status = serviceStatus(machine, service);;) {
        if (isUp(status))
            return true;
        const quint32 patience = std::max(LongestSilenceMilliseconds, status.waitHintMilliseconds);
        if (status.currentState != service_state::StartPending || clock.tickCount() - lastSign > patience)
            return false;
        clock.sleep(PollMilliseconds);
        const ServiceStatus now = serviceStatus(machine, service);
        if (now.checkPoint != status.checkPoint)
            lastSign = clock.tickCount();
        status = now;
    }
}

class ServiceStart
{
public:
    explicit ServiceStart(TreeMachine& machine) : m_machine(machine), m_database(machine) { }

    Status run(const QString& service);

private:
    /// The configuration of a service that is not running and may be started.
    Result<ServiceConfig> startable(const QString& service) const;
    /// The first dependency that is not up.
    std::optional<QString> lacking(const ServiceConfig& config) const;
    /// Starts one service whose dependencies are up, under the lock that keeps them so.
    Status launch(const QString& service) const;

    TreeMachine& m_machine;
    TreeServiceDatabase m_database;
};

Status ServiceStart::run(const QString& service)
{
    const Result<ServiceConfig> config = startable(service);
    if (!config)
        return config.failure();
    DependencyWalk walk(m_machine);
    if (Status planned = walk.plan(service, config->dependencies); !planned)
        return planned;
    for (const QString& each : walk.order()) {
        const Status launched = launch(each);
        // A machine on which nothing is started says so.
        if (launched.errorNumber() == error::NotSupported)
            return launched;
        const bool isUnderWay = launched || launched.errorNumber() == error::ServiceAlreadyRunning;
        if (!(isUnderWay && comesUp(m_machine, each)) && walk.isVital(each))
            return Error{error::ServiceDependencyFail, each};
    }
    return launch(service);
}

Result<ServiceConfig> ServiceStart::startable(const QString& service) const
{
    Result<ServiceConfig> config = m_database.config(service);
    if (!config)
        return config;
    if (m_database.isMarkedForDelete(service))
        return Error{error::ServiceMarkedForDelete, service};
    if (serviceStatus(m_machine, service).currentState != service_state::Stopped)
        return Error{error::ServiceAlreadyRunning, service};
    if (config->startType == start_type::Disabled)
        return Error{error::ServiceDisabled, service};
    return config;
}

std::optional<QString> ServiceStart::lacking(const ServiceConfig& config) const
{
    const auto up = [this](const QString& service) { return isUp(serviceStatus(m_machine, service)); };
    for (const QString& each : config.dependencies) {
        // A group that nobody is in lacks nothing.
        const QStringList members = isGroup(each) ? m_database.members(each) : QStringList{each};
        if (!members.isEmpty() && std::none_of(members.begin(), members.end(), up))
            return each;
    }
    return std::nullopt;
}

Status ServiceStart::launch(const QString& service) const
{
    const auto lock = ServiceFolder::lockServices(ServiceFolder::parent(m_machine.paths()));
    if (!lock)
        return lock.failure();
    const Result<ServiceConfig> config = startable(service);
    if (!config)
        return config.failure();
    if (const auto dependency = lacking(*config))
        return Error{error::ServiceDependencyFail, *dependency};
    if (const auto program = m_database.program(*config); !program)
        return program.failure();
    Status launched = launchServiceHost(m_machine, m_database.storedName(service));
    if (launched.errorNumber() == error::LockViolation)
        say(launched.failure().detail + u" is locked by another program"_s);
    return launched;
}

} // namespace

ServiceStatus serviceStatus(TreeMachine& machine, QStringView service)
{
    if (TreeServiceDatabase(machine).isSystemDriver(service))
        return {service_state::Running, error::Success, 0, 0};
    const ServiceRecord record = ServiceFolder(machine.paths(), service).current();
    ServiceStatus status = record.status;
    if (record.service && status.currentState != service_state::Stopped)
        status.processId = static_cast<quint32>(record.service->pid);
    return status;
}

Status startWithDependencies(TreeMachine& machine, const QString& service)
{
    if (const Result<HostFolder> parent = ServiceFolder::makeParent(machine.paths()); !parent)
        return parent.failure();
    return ServiceStart(machine).run(service);
}

} // namespace quoril
