#include "services/service_app.h"

#include "formats/name_case.h"
#include "platform/machine.h"
#include "platform/processes.h"
#include "platform/system_info.h"
#include "resources/resource_module.h"
#include "resources/text_ids.h"
#include "services/service_engine.h"
#include "services/service_walk.h"
#include "services/user_prompts.h"

#include <QStringBuilder>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype EmulationTypeBytes = 1023;
constexpr quint32 ProcessWait = 30000;
constexpr int ProcessNotCreated = 2;
constexpr qsizetype LineEndUnits = 2;

qsizetype bytesOf(const QString& name)
{
    return (name.size() + 1) * qsizetype(sizeof(char16_t));
}

/// Why a service was not removed: a text, and the error number that is its reason, if any.
struct RemovalFailure
{
    quint32 textId = 0; ///< 0 for none
    quint32 reason = error::Success;
    quint32 refusal = error::Success; ///< of the deletion itself, which the text doesn't show
};

RemovalFailure deleteStopped(Service& service)
{
    const auto status = service.queryStatus();
    if (!status)
        return {text::RemovalQueryFailed, status.errorNumber()};
    if (status->currentState != service_state::Stopped)
        return {text::RemovalStillRunning};
    const Status deleted = service.markForDelete();
    return deleted ? RemovalFailure() : RemovalFailure{text::RemovalFailed, {}, deleted.errorNumber()};
}

} // namespace

bool DependencyBuffer::append(const QString& name)
{
    if (bytesUsed() + bytesOf(name) > SizeBytes)
        return false;
    m_names.append(name);
    return true;
}

qsizetype DependencyBuffer::bytesUsed() const
{
    qsizetype bytes = bytesOf({});
    for (const QString& name : m_names)
        bytes += bytesOf(name);
    return bytes;
}

DependencyBuffer& ServiceApp::dependencies()
{
    static DependencyBuffer buffer;
    return buffer;
}

int ServiceApp::SetDependencies(const QString& serviceName) const
{
    const auto act = [](Service& service) {
        ServiceConfigChange change;
        change.dependencies = dependencies().names();
        return service.changeConfig(change);
    };
    const auto outcome
        = operateService({serviceName, service_access::ChangeConfig, DatabaseLocking::Required}, act);
    switch (outcome.step) {
    case ServiceStep::OpenManager:
        return -1;
    case ServiceStep::LockDatabase:
        return -2;
    case ServiceStep::LockHeld:
        return -4;
    case ServiceStep::NoMemory:
        return -3;
    case ServiceStep::OpenService:
        return -5;
    case ServiceStep::Act:
        return -6;
    case ServiceStep::Done:
        break;
    }
    return 0;
}

int ServiceApp::RemoveRegistration(const QString& serviceName, UserPrompts& prompts, quint32* refusal) const
{
    RemovalFailure failure;
    const auto act = [&](Service& service) {
        failure = deleteStopped(service);
        return Status();
    };
    constexpr quint32 rights
        = service_access::Delete | service_access::QueryConfig | service_access::QueryStatus;
    const auto outcome = operateService({serviceName, rights}, act);
    if (outcome.step == ServiceStep::OpenManager)
        failure = {text::RemovalManagerConnectFailed, outcome.errorNumber};
    else if (outcome.step == ServiceStep::OpenService)
        failure = {text::RemovalServiceConnectFailed, outcome.errorNumber};
    if (failure.textId == 0)
        return 0;
    if (refusal && failure.refusal)
        *refusal = failure.refusal;
    prompts.message(withReason(loadText(failure.textId), failure.reason));
    return -1;
}

int ServiceApp::RemoveService(
    const QString& serviceName, bool ask, UserPrompts& prompts, quint32* refusal) const
{
    if (ask && !(prompts.confirmRemoval(serviceName) && prompts.ask(loadText(text::RemovalQuestion))))
        return 1;
    QString installed;
    (void)FindInstalledService(serviceName, installed);
    if (installed.isEmpty()) {
        prompts.message(loadText(text::ServiceNotInstalled));
        return -1;
    }
    return RemoveRegistration(serviceName, prompts, refusal);
}

int ServiceApp::FindInstalledService(const QString& serviceName, QString& installedName) const
{
    installedName.clear();
    const Status walked = walkInstances({}, [&](const InstanceVisit& instance) {
        if (!openParameters(instance.key, EmulationTypeBytes) || !foldedEquals(instance.name, serviceName))
            return Walk::Continue;
        installedName = upcase(instance.name);
        return Walk::Stop;
    });
    return walked ? 0 : -1;
}

QString ServiceApp::ErrorText(quint32 number)
{
    const QString code = u"0x"_s + QString::number(number, 16).toUpper();
    QString text = machine().systemInfo().errorText(number);
    if (text.isEmpty())
        return code;
    text.chop(LineEndUnits);
    return text % u" (" % code % u')';
}

QString withReason(const QString& message, quint32 errorNumber)
{
    return errorNumber ? message % loadText(text::Reason) % ServiceApp::ErrorText(errorNumber) : message;
}

int RunProcess(const QString& commandLine, UserPrompts& prompts)
{
    const auto process = machine().processes().create({}, commandLine);
    if (!process) {
        prompts.message(loadText(text::CreateProcessFailed).replace(u"%s"_s, commandLine));
        return ProcessNotCreated;
    }
    // A program that takes longer is left running.
    (void)(*process)->wait(ProcessWait);
    const auto code = (*process)->exitCode();
    return code ? int(*code) : 0;
}

} // namespace quoril
