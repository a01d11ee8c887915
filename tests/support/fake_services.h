#pragma once

#include "fake_calls.h"
#include "formats/name_case.h"
#include "platform/services.h"

#include <map>
#include <vector>

namespace quoril::test {

using namespace Qt::StringLiterals;

using ServiceStates = std::vector<quint32>;

/// What a service does.
struct ServiceScript
{
    ServiceStates states{service_state::Stopped}; ///< one for each query, the last one stays
    ServiceStates afterStart{service_state::Running}; ///< the states from an accepted start on
    ServiceStates afterStop{service_state::Stopped};
    ServiceConfig config{0x10, start_type::Manual, 1, {}, {}, {}, {}};
    /// The error of an operation by its word in the log: open, queryStatus, queryConfig, start, control,
    /// changeConfig, delete.
    std::map<QString, quint32> errors;
    bool deleted = false;
    quint32 processId = 0; ///< what runs after a stop has the next one
};

/// An open service.
class FakeService : public Service
{
public:
    FakeService(FakeCalls& calls, ServiceScript& script, QString name, quint32 rights)
        : m_calls(calls)
        , m_script(script)
        , m_name(std::move(name))
        , m_rights(rights)
        , m_mark(calls)
    {
    }

    Result<ServiceStatus> queryStatus() override
    {
        return with<Result<ServiceStatus>>(u"queryStatus"_s, service_access::QueryStatus, {}, [this] {
            const ServiceStatus status{m_script.states.front(), 0, 0, 0, m_script.processId};
            if (m_script.states.size() > 1)
                m_script.states.erase(m_script.states.begin());
            return status;
        });
    }
    Result<ServiceConfig> queryConfig(qsizetype) override
    {
        return with<Result<ServiceConfig>>(
            u"queryConfig"_s, service_access::QueryConfig, {}, [this] { return m_script.config; });
    }
    Status start() override
    {
        return with<Status>(u"start"_s, service_access::Start, {}, [this] {
            m_script.states = m_script.afterStart;
            return Status();
        });
    }
    Result<ServiceStatus> control(quint32 code) override
    {
        const QString number = u' ' + QString::number(code);
        return with<Result<ServiceStatus>>(u"control"_s, service_access::Stop, number, [this] {
            m_script.states = m_script.afterStop, ++m_script.processId;
            return ServiceStatus{m_script.states.front(), 0, 0, 0};
        });
    }
    Status changeConfig(const ServiceConfigChange& change) override
    {
        QString what;
        if (change.startType != ServiceNoChange)
            what += u" startType="_s + QString::number(change.startType);
        if (change.dependencies)
            what += u" dependencies="_s + change.dependencies->join(u'|');
        if (change.serviceType != ServiceNoChange || change.errorControl != ServiceNoChange
            || change.binaryPath || change.displayName)
            what += u" and more"_s;
        return with<Status>(u"changeConfig"_s, service_access::ChangeConfig, what, [&] {
            if (change.startType != ServiceNoChange)
                m_script.config.startType = change.startType;
            if (change.dependencies)
                m_script.config.dependencies = *change.dependencies;
            return Status();
        });
    }
    Status markForDelete() override
    {
        return with<Status>(u"delete"_s, service_access::Delete, {}, [this] {
            m_script.deleted = true;
            return Status();
        });
    }

private:
    template <typename Given, typename Make>
    Given with(const QString& operation, quint32 right, const QString& argument, const Make& make)
    {
        return m_calls.attempt<Given>(operation + u' ' + m_name + argument, [&]() -> Given {
            if (!(m_rights & right))
                return Error{error::AccessDenied, {}};
            if (const auto scripted = m_script.errors.find(operation); scripted != m_script.errors.end())
                return Error{scripted->second, {}};
            return make();
        });
    }

    FakeCalls& m_calls;
    ServiceScript& m_script;
    QString m_name;
    quint32 m_rights;
    OpenMark m_mark;
};

/// The lock of the database.
class FakeLock : public ServiceDatabaseLock
{
public:
    FakeLock(FakeCalls& calls, bool& locked) : m_calls(calls), m_locked(locked), m_mark(calls)
    {
        m_locked = true;
    }
    ~FakeLock() override
    {
        m_locked = false;
        m_calls.log(u"unlock"_s);
    }

private:
    FakeCalls& m_calls;
    bool& m_locked;
    OpenMark m_mark;
};

/// An open service manager.
class FakeManager : public ServiceManager
{
public:
    struct Database
    {
        std::map<QString, ServiceScript> services; ///< by name in upper case
        bool locked = false; ///< by whomever
    };

    FakeManager(FakeCalls& calls, Database& database)
        : m_calls(calls)
        , m_database(database)
        , m_mark(calls) { }
    ~FakeManager() override { m_calls.log(u"close manager"_s); }

    Result<std::unique_ptr<Service>> openService(QStringView name, quint32 access) override
    {
        using Given = Result<std::unique_ptr<Service>>;
        const QString mask = u" 0x"_s + QString::number(access, 16);
        return m_calls.attempt<Given>(u"open "_s + name.toString() + mask, [&]() -> Given {
            const auto found = m_database.services.find(upcase(name));
            if (found == m_database.services.end() || found->second.deleted)
                return Error{error::ServiceDoesNotExist, {}};
            if (const auto scripted = found->second.errors.find(u"open"_s);
                scripted != found->second.errors.end())
                return Error{scripted->second, {}};
            return std::unique_ptr<Service>(
                std::make_unique<FakeService>(m_calls, found->second, name.toString(), access));
        });
    }
    // Nobody above the platform registers a service.
    Status createService(const NewService&) override { return Error{error::AccessDenied, {}}; }
    Result<std::unique_ptr<ServiceDatabaseLock>> lockDatabase() override
    {
        using Given = Result<std::unique_ptr<ServiceDatabaseLock>>;
        return m_calls.attempt<Given>(u"lock"_s, [this]() -> Given {
            if (m_database.locked)
                return Error{error::ServiceDatabaseLocked, {}};
            return std::unique_ptr<ServiceDatabaseLock>(
                std::make_unique<FakeLock>(m_calls, m_database.locked));
        });
    }
    QueryBlock allocate(std::size_t bytes) override
    {
        return m_calls.note({}) ? QueryBlock() : QueryBlock(bytes);
    }
    Result<ServiceLockStatus> queryLockStatus(const QueryBlock&) override
    {
        return m_calls.attempt<Result<ServiceLockStatus>>(u"queryLockStatus"_s, [this] {
            return ServiceLockStatus{m_database.locked, u"HOST\\operator"_s, 1};
        });
    }

private:
    FakeCalls& m_calls;
    Database& m_database;
    OpenMark m_mark;
};

/// A service manager that follows a script. Each call is logged in the form "start A"; an open service and
/// the manager with the rights asked for, "open A 0x14".
class FakeServiceControl : public ServiceControl
{
public:
    using States = ServiceStates;
    using Script = ServiceScript;

    explicit FakeServiceControl(FakeCalls& calls) : m_calls(calls) { }

    /// The service of that name, made when there is none. Names match without regard to case.
    Script& service(const QString& name) { return database.services[upcase(name)]; }

    FakeManager::Database database;

    Result<std::unique_ptr<ServiceManager>> openManager(quint32 access) override
    {
        return m_calls.attempt<Result<std::unique_ptr<ServiceManager>>>(
            u"manager 0x"_s + QString::number(access, 16), [this] {
                return std::unique_ptr<ServiceManager>(std::make_unique<FakeManager>(m_calls, database));
            });
    }

private:
    FakeCalls& m_calls;
};

} // namespace quoril::test
