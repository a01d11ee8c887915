#include "fake_services.h"

#include <QStringBuilder>

namespace quoril::test {

using namespace Qt::StringLiterals;
using Script = FakeServiceControl::Script;

namespace {

QString hex(quint32 mask)
{
    return u"0x"_s + QString::number(mask, 16);
}

class FakeService : public Service
{
public:
    FakeService(FakeCalls& calls, Script& script, QString name, quint32 rights)
        : m_calls(calls)
        , m_script(script)
        , m_name(std::move(name))
        , m_rights(rights)
        , m_mark(calls)
    {
    }

    Result<ServiceStatus> queryStatus() override
    {
        if (const Status allowed = check(u"queryStatus"_s, service_access::QueryStatus); !allowed)
            return allowed.failure();
        const ServiceStatus status{m_script.states.front(), 0, 0, 0, m_script.processId};
        if (m_script.states.size() > 1)
            m_script.states.erase(m_script.states.begin());
        return status;
    }

    Result<ServiceConfig> queryConfig(qsizetype) override
    {
        if (const Status allowed = check(u"queryConfig"_s, service_access::QueryConfig); !allowed)
            return allowed.failure();
        return m_script.config;
    }

    Status start() override
    {
        const Status allowed = check(u"start"_s, service_access::Start);
        if (allowed)
            m_script.states = m_script.afterStart;
        return allowed;
    }

    Result<ServiceStatus> control(quint32 code) override
    {
        if (const Status allowed = check(u"control"_s, service_access::Stop, QString::number(code)); !allowed)
            return allowed.failure();
        if (code == ServiceControlStop)
            m_script.states = m_script.afterStop, ++m_script.processId;
        return ServiceStatus{m_script.states.front(), 0, 0, 0};
    }

    Status changeConfig(const ServiceConfigChange& change) override
    {
        QString what;
        if (change.startType != ServiceNoChange)
            what += u"startType="_s + QString::number(change.startType);
        if (change.dependencies)
            what += u"dependencies="_s + change.dependencies->join(u'|');
        if (change.serviceType != ServiceNoChange || change.errorControl != ServiceNoChange
            || change.binaryPath || change.displayName)
            what += u" and more"_s;
        const Status allowed = check(u"changeConfig"_s, service_access::ChangeConfig, what);
        if (!allowed)
            return allowed;
        if (change.startType != ServiceNoChange)
            m_script.config.startType = change.startType;
        if (change.dependencies)
            m_script.config.dependencies = *change.dependencies;
        return {};
    }

    Status markForDelete() override
    {
        const Status allowed = check(u"delete"_s, service_access::Delete);
        m_script.deleted |= allowed.ok();
        return allowed;
    }

private:
    Status check(const QString& operation, quint32 right, const QString& argument = {})
    {
        const QString what = operation + u' ' + m_name;
        if (const auto failure = m_calls.note(argument.isEmpty() ? what : what + u' ' + argument))
            return *failure;
        if (!(m_rights & right))
            return Error{error::AccessDenied, {}};
        const auto scripted = m_script.errors.find(operation);
        return scripted == m_script.errors.end() ? Status() : Status(Error{scripted->second, {}});
    }

    FakeCalls& m_calls;
    Script& m_script;
    QString m_name;
    quint32 m_rights;
    OpenMark m_mark;
};

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

} // namespace

class FakeManager : public ServiceManager
{
public:
    explicit FakeManager(FakeServiceControl& control) : m_control(control), m_mark(control.m_calls) { }
    ~FakeManager() override { m_control.m_calls.log(u"close manager"_s); }

    Result<std::unique_ptr<Service>> openService(QStringView name, quint32 access) override
    {
        if (const auto failure = m_control.m_calls.note(u"open "_s % name % u' ' % hex(access)))
            return *failure;
        const auto found = m_control.m_services.find(upcase(name));
        if (found == m_control.m_services.end() || found->second.deleted)
            return Error{error::ServiceDoesNotExist, {}};
        if (const auto scripted = found->second.errors.find(u"open"_s);
            scripted != found->second.errors.end())
            return Error{scripted->second, {}};
        return std::unique_ptr<Service>(
            std::make_unique<FakeService>(m_control.m_calls, found->second, name.toString(), access));
    }

    Status createService(const NewService& service) override
    {
        if (const auto failure = m_control.m_calls.note(u"create "_s % service.name))
            return *failure;
        if (m_control.m_services.count(upcase(service.name)) != 0)
            return Error{error::ServiceExists, {}};
        m_control.service(service.name).config = {0x10, service.startType, 1, service.binaryPath,
            service.loadOrderGroup, service.dependencies, service.displayName};
        return {};
    }

    Result<std::unique_ptr<ServiceDatabaseLock>> lockDatabase() override
    {
        if (const auto failure = m_control.m_calls.note(u"lock"_s))
            return *failure;
        if (m_control.lockError)
            return Error{m_control.lockError, {}};
        if (m_control.locked)
            return Error{error::ServiceDatabaseLocked, {}};
        return std::unique_ptr<ServiceDatabaseLock>(
            std::make_unique<FakeLock>(m_control.m_calls, m_control.locked));
    }

    QueryBlock allocate(std::size_t bytes) override
    {
        return m_control.m_calls.note({}) ? QueryBlock() : QueryBlock(bytes);
    }

    Result<ServiceLockStatus> queryLockStatus(const QueryBlock&) override
    {
        if (const auto failure = m_control.m_calls.note(u"queryLockStatus"_s))
            return *failure;
        return ServiceLockStatus{m_control.locked, u"HOST\\operator"_s, 1};
    }

private:
    FakeServiceControl& m_control;
    OpenMark m_mark;
};

Result<std::unique_ptr<ServiceManager>> FakeServiceControl::openManager(quint32 access)
{
    if (const auto failure = m_calls.note(u"manager "_s + hex(access)))
        return *failure;
    return std::unique_ptr<ServiceManager>(std::make_unique<FakeManager>(*this));
}

} // namespace quoril::test
