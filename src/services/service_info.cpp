#include "services/service_info.h"
#include "platform/clock.h"
#include "platform/machine.h"
#include "resources/resource_module.h"
#include "resources/text_ids.h"
#include "services/service_engine.h"
#include "services/service_walk.h"
#include "services/user_prompts.h"

#include <QStringBuilder>
#include <QStringList>

namespace quoril {

ServiceInfo g_no_service;

namespace {

constexpr qsizetype ConfigBytes = 4096;
constexpr qsizetype DependencyBytes = 1023;
constexpr quint32 SecondsAfterStart = 3;
constexpr quint32 SecondsAfterStop = 1;
constexpr quint32 PrerequisiteBox = 2000;
constexpr quint32 ReconfigurationBox = 5000;
constexpr quint32 PollInterval = 1000;
constexpr quint32 LongestWait = 4000;

qint32 statusCode(quint32 currentState)
{
    switch (currentState) {
    case service_state::Stopped:
        return ServiceInfo::Stopped;
    case service_state::Running:
        return ServiceInfo::Started;
    case service_state::Paused:
        return ServiceInfo::Paused;
    default:
        return 0;
    }
}

/// Turns an outcome into a result, with the failure's text in the record.
int report(ServiceInfo& record, const ServiceOutcome& outcome, const QString& actFailure)
{
    if (outcome.step == ServiceStep::Done)
        return 0;
    record.Reason = outcome.errorNumber;
    switch (outcome.step) {
    case ServiceStep::Done:
        break;
    case ServiceStep::OpenManager:
        record.Message = loadText(text::ManagerConnectFailed);
        break;
    case ServiceStep::LockDatabase:
    case ServiceStep::LockHeld:
    case ServiceStep::NoMemory:
        record.Message = loadText(text::DatabaseLockFailed);
        break;
    case ServiceStep::OpenService:
        record.Message = loadText(text::ServiceConnectFailed) % u' ' % record.Name;
        break;
    case ServiceStep::Act:
        record.Message = actFailure;
        break;
    }
    return 1;
}

QString quoted(quint32 textId, const QString& name)
{
    return loadText(textId) % u" \"" % name % u'"';
}

quint32 secondsNow()
{
    return quint32(machine().clock().now());
}

bool isRunning(const Result<ServiceStatus>& status)
{
    return status && status->currentState == service_state::Running;
}

enum class Waited
{
    Running = 0,
    TooLong = ServiceInfo::PrerequisiteNotRunning,
    QueryFailed = 2
};

/// Waits in whole seconds, without looking again after the last one.
Waited waitUntilRunning(Service& service)
{
    Clock& clock = machine().clock();
    clock.sleep(PollInterval);
    quint32 waited = PollInterval;
    if (isRunning(service.queryStatus()))
        return Waited::Running;
    while (waited <= LongestWait) {
        const auto status = service.queryStatus();
        if (!status)
            return Waited::QueryFailed;
        if (isRunning(status))
            return Waited::Running;
        clock.sleep(PollInterval);
        waited += PollInterval;
    }
    return Waited::TooLong;
}

} // namespace

int ServiceInfo::QueryState()
{
    const auto act = [this](Service& service) -> Result<void> {
        const auto status = service.queryStatus();
        if (!status)
            return status.failure();
        Reported = *status;
        Status = statusCode(status->currentState);
        const auto config = service.queryConfig(ConfigBytes);
        ConfigError = config.errorNumber();
        if (config)
            StartType = qint32(config->startType);
        return {};
    };
    constexpr quint32 rights = service_access::QueryConfig | service_access::QueryStatus;
    return report(
        *this, operateService({Name, rights}, act), loadText(text::ServiceQueryFailed) % u' ' % Name);
}

int ServiceInfo::StartNow()
{
    const auto act = [this](Service& service) {
        LogFrom = secondsNow();
        LogTo = LogFrom + SecondsAfterStart;
        return service.start();
    };
    return report(
        *this, operateService({Name, service_access::Start}, act), quoted(text::ServiceStartFailed, Name));
}

int ServiceInfo::StopNow()
{
    const auto act = [this](Service& service) -> Result<void> {
        const auto stopped = service.control(ServiceControlStop);
        if (!stopped)
            return stopped.failure();
        LogTo = secondsNow() + SecondsAfterStop;
        return {};
    };
    return report(
        *this, operateService({Name, service_access::Stop}, act), quoted(text::ServiceStopFailed, Name));
}

int ServiceInfo::StartPrerequisites(UserPrompts& prompts)
{
    Result<QStringList> names = QStringList();
    const auto walked = walkInstances({}, [&](const InstanceVisit& instance) {
        if (instance.name != Name)
            return Walk::Continue;
        names = instance.key.multiString(u"DependOnService", DependencyBytes);
        return Walk::Stop;
    });
    if (!walked || !names)
        return -1;
    int result = 0;
    for (const QString& name : std::as_const(*names)) {
        result = StartPrerequisite(name, prompts);
        if (result == int(Waited::TooLong))
            break;
    }
    return result;
}

int ServiceInfo::StartPrerequisite(const QString& name, UserPrompts& prompts)
{
    Waited waited = Waited::Running;
    const auto act = [&](Service& service) -> Result<void> {
        const auto before = service.queryStatus();
        if (!before || isRunning(before))
            return {};
        prompts.inform(loadText(text::WaitPrerequisite), PrerequisiteBox);
        // A refused start shows in the states that follow.
        (void)service.start();
        waited = waitUntilRunning(service);
        return {};
    };
    constexpr quint32 rights = service_access::Start | service_access::QueryStatus;
    const auto outcome = operateService({name, rights, DatabaseLocking::None, ManagerUse::KeepOpen}, act);
    if (outcome.step == ServiceStep::OpenManager)
        return -1;
    if (outcome.step != ServiceStep::Done)
        return int(outcome.errorNumber);
    if (waited == Waited::TooLong) {
        Reason = error::Success;
        Message = loadText(text::PrerequisiteStartFailed);
    }
    return int(waited);
}

int ServiceInfo::SetStartType(qint32 type, UserPrompts& prompts)
{
    const auto act = [&](Service& service) {
        ServiceConfigChange change;
        change.startType = quint32(type);
        const auto changed = service.changeConfig(change);
        if (changed)
            prompts.inform(loadText(text::WaitReconfiguration), ReconfigurationBox);
        return changed;
    };
    const auto outcome = operateService({Name, service_access::ChangeConfig, DatabaseLocking::IfFree}, act);
    return report(*this, outcome, loadText(text::ServiceChangeFailed) % u' ' % Name);
}

} // namespace quoril
