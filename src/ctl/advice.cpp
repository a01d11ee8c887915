#include "ctl/advice.h"

#include "ctl/instances.h"
#include "ctl/subcommand.h"
#include "formats/name_case.h"
#include "platform/files.h"
#include "platform/machine.h"
#include "platform/processes.h"
#include "services/service_app.h"

#include <QFileInfo>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

/// The number that a service ended with. Those of a service's own mean nothing to the system.
QString endText(quint32 code)
{
    const QString known = ServiceApp::ErrorText(code);
    return known.contains(u' ') ? known : u"it ended with exit code %1 (%2)"_s.arg(code).arg(known);
}

/// What a service that doesn't run is doing, and why if that is known.
QString conditionOf(const ServiceInfo& service)
{
    const QString state = stateWord(service.Reported.currentState);
    if (service.Reported.currentState != service_state::Stopped)
        return state;
    if (service.StartType == qint32(start_type::Disabled))
        return state + u" and disabled"_s;
    const quint32 code = service.Reported.win32ExitCode;
    return code == error::Success ? state : state + u": "_s + endText(code);
}

} // namespace

void adviseUnknown(Ctl& ctl, const QString& name)
{
    ctl.console.report(u"No instance \"%1\"; see \"quorilctl list\"."_s.arg(name));
}

void advisePrerequisites(Ctl& ctl, const ServiceInfo& service)
{
    for (const QString& name : prerequisitesOf(service)) {
        ServiceInfo needed;
        needed.Name = name;
        if (!askState(needed))
            ctl.console.report(
                u"%1 needs \"%2\": %3"_s.arg(service.Name, name, ServiceApp::ErrorText(needed.Reason)));
        else if (needed.Reported.currentState != service_state::Running)
            ctl.console.report(
                u"%1 needs \"%2\", which is %3"_s.arg(service.Name, name, conditionOf(needed)));
    }
}

void adviseStart(Ctl& ctl, const ServiceInfo& service)
{
    if (service.Reason == error::ServiceDisabled)
        ctl.console.report(
            u"%1 is disabled; allow its start first: \"quorilctl set-start-type %1 manual\"."_s.arg(
                service.Name));
}

void adviseState(Ctl& ctl, const ServiceInfo& service)
{
    const quint32 state = service.Reported.currentState;
    const bool rests = state == service_state::Stopped || state == service_state::Running
        || state == service_state::Paused;
    ctl.console.report(u"%1 is %2%3; try \"quorilctl status %1\" and \"quorilctl logs %1\"."_s.arg(
        service.Name, rests ? QString() : u"still "_s, conditionOf(service)));
}

void adviseStop(Ctl& ctl, Instances& instances, const ServiceInfo& service)
{
    if (service.Reason != error::DependentServicesRunning)
        return;
    QStringList running;
    for (ServiceInfo& other : instances.all()) {
        const QStringList needed = prerequisitesOf(other);
        const bool needs = std::any_of(needed.begin(), needed.end(),
            [&service](const QString& name) { return foldedEquals(name, service.Name); });
        if (needs && askState(other) && other.Reported.currentState != service_state::Stopped)
            running.append(other.Name);
    }
    if (running.isEmpty())
        ctl.console.report(u"A service that is not an instance needs %1; stop it first."_s.arg(service.Name));
    else
        ctl.console.report(
            u"These need %1 and are running; stop them first: %2"_s.arg(service.Name, running.join(u", "_s)));
}

void adviseRemoval(Ctl& ctl, const QString& name, quint32 refusal)
{
    Instances instances;
    if (!instances.read(ctl))
        return;
    ServiceInfo* const service = instances.lookUp(name);
    if (!service)
        adviseUnknown(ctl, name);
    else if (refusal != error::Success)
        ctl.console.report(u"%1 can't be removed: %2"_s.arg(service->Name, ServiceApp::ErrorText(refusal)));
    else if (askState(*service) && service->Reported.currentState != service_state::Stopped)
        ctl.console.report(u"%1 is %2; stop it first: \"quorilctl stop %1\"."_s.arg(
            service->Name, stateWord(service->Reported.currentState)));
}

void adviseExecutable(Ctl& ctl, const QString& path)
{
    const auto host = machine().files().hostPath(path);
    if (host && !QFileInfo(*host).isExecutable())
        ctl.console.report(
            u"\"%1\" can't be executed: it is there, but not marked as a program."_s.arg(path));
    else if (host && machine().processes().canRun(path).errorNumber() == error::BadExeFormat)
        ctl.console.report(
            u"\"%1\" is not a program for this system; are --config and --executable swapped?"_s.arg(path));
}

} // namespace quoril
