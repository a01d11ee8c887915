#pragma once

#include "fake_calls.h"
#include "formats/name_case.h"
#include "platform/services.h"

#include <map>
#include <vector>

namespace quoril::test {

using namespace Qt::StringLiterals;

/// What a service does.
struct ServiceScript
{
    using States = std::vector<quint32>;

    States states{service_state::Stopped}; ///< one for each query, the last one stays
    States afterStart{service_state::Running}; ///< the states from an accepted start on
    States afterStop{service_state::Stopped};
    ServiceConfig config{0x10, start_type::Manual, 1, {}, {}, {}, {}};
    /// The error of an operation by its word in the log: queryStatus, queryConfig, start, control,
    /// changeConfig, delete.
    std::map<QString, quint32> errors;
    bool deleted = false;
    quint32 processId = 0; ///< what runs after a stop has the next one
};

/// An open service.
class FakeService : public FakeHandle<Service>
{
public:
    FakeService(FakeCalls& calls, ServiceScript& script, QStringView name, quint32 rights)
        : FakeHandle(calls)
        , m_script(script)
        , m_name(name.toString())
        , m_rights(rights)
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

    ServiceScript& m_script;
    QString m_name;
    quint32 m_rights;
};

/// What the service managers work on.
struct FakeDatabase
{
    std::map<QString, ServiceScript> services; ///< by name in upper case
    bool locked = false; ///< by whomever
};

/// The lock of the database.
class FakeLock : public FakeHandle<ServiceDatabaseLock>
{
public:
    FakeLock(FakeCalls& calls, bool& locked) : FakeHandle(calls), m_locked(locked) { m_locked = true; }
    ~FakeLock() override
    {
        m_locked = false;
        m_calls.log(u"unlock"_s);
    }

private:
    bool& m_locked;
};

/// An open service manager.
class FakeManager : public FakeHandle<ServiceManager>
{
public:
    FakeManager(FakeCalls& calls, FakeDatabase& database) : FakeHandle(calls), m_database(database) { }
    ~FakeManager() override { m_calls.log(u"close manager"_s); }

    Result<std::unique_ptr<Service>> openService(QStringView name, quint32 access) override
    {
        using Given = Result<std::unique_ptr<Service>>;
        const QString mask = u" 0x"_s + QString::number(access, 16);
        return m_calls.attempt<Given>(u"open "_s + name.toString() + mask, [&]() -> Given {
            const auto found = m_database.services.find(upcase(name));
            if (found == m_database.services.end() || found->second.deleted)
                return Error{error::ServiceDoesNotExist, {}};
            return Given(std::make_unique<FakeService>(m_calls, found->second, name, access));
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
            return Given(std::make_unique<FakeLock>(m_calls, m_database.locked));
        });
    }
    QueryBlock allocate(std::size_t bytes) override
    {
        return m_calls.note({}) ? QueryBlock() : QueryBlock(bytes);
    }
    Result<ServiceLockStatus> queryLockStatus(const QueryBlock&) override
    {
        return m_calls.attempt<Result<ServiceLockStatus>>(
            u"queryLockStatus"_s, [] { return ServiceLockStatus(); });
    }

private:
    FakeDatabase& m_database;
};

/// A service manager that follows a script. Each call is logged in the form "start A"; an open service and
/// the manager with the rights asked for, "open A 0x14".
class FakeServiceControl : public FakePart<ServiceControl>
{
public:
    using FakePart::FakePart;

    FakeDatabase database;
    /// The service of that name, made when there is none. Names match without regard to case.
    ServiceScript& service(const QString& name) { return database.services[upcase(name)]; }

    Result<std::unique_ptr<ServiceManager>> openManager(quint32 access) override
    {
        using Given = Result<std::unique_ptr<ServiceManager>>;
        return m_calls.attempt<Given>(u"manager 0x"_s + QString::number(access, 16),
            [this] { return Given(std::make_unique<FakeManager>(m_calls, database)); });
    }
};

} // namespace quoril::test
