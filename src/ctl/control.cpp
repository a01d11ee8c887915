// start, stop, set-start-type, remove.

#include "ctl/advice.h"
#include "ctl/console_prompts.h"
#include "ctl/instances.h"
#include "ctl/output.h"
#include "ctl/progress.h"
#include "ctl/subcommand.h"
#include "platform/clock.h"
#include "platform/machine.h"
#include "resources/resource_module.h"
#include "resources/text_ids.h"
#include "services/service_app.h"

#include <algorithm>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr quint32 PollInterval = 200;
constexpr int NotRemoved = -1; ///< by a failure; a person may decline, too

struct ControlOptions
{
    QStringList names;
    bool alone = false; ///< without the prerequisites
    bool noWait = false;
    quint32 timeoutSeconds = 60;
};

void declareControl(const CommandParser& parser, ControlOptions& options)
{
    parser.addTexts("names", options.names, "Names of instances").required().valueName("NAME");
    const ParsedOption noWait
        = parser.addFlag("--no-wait", options.noWait, "Return as soon as the request is made");
    parser.addDuration("--timeout", options.timeoutSeconds, 1, "Longest wait, by default 60s")
        .excludes(noWait);
}

void declareStart(const CommandParser& parser, ControlOptions& options)
{
    declareControl(parser, options);
    parser.addFlag(
        "--no-prerequisites", options.alone, "Leave it to the service manager to start what they need");
}

/// What is waited for, and what is said meanwhile and on a failure.
struct Goal
{
    quint32 state;
    quint32 pendingState; ///< the one on the way to it
    quint32 waitText;
    quint32 failureText;
};

constexpr Goal Started{
    service_state::Running, service_state::StartPending, text::WaitStarted, text::ServiceStartFailed};
constexpr Goal Stopped{
    service_state::Stopped, service_state::StopPending, text::WaitStopped, text::ServiceStopFailed};

enum class Waited
{
    Reached,
    Elsewhere, ///< it came to rest in another state
    TooLong,
    QueryFailed
};

/// Waits for the goal. A process that was asked to stop and is another by now has ended, although the service
/// runs: somebody started it anew.
Waited waitFor(ServiceInfo& service, const Goal& goal, quint32 timeoutSeconds, quint32 processId)
{
    Clock& clock = machine().clock();
    const quint64 end = clock.tickCount() + quint64(timeoutSeconds) * 1000;
    while (service.QueryState() == 0) {
        const quint32 state = service.Reported.currentState;
        if (state == goal.state || (processId != 0 && service.Reported.processId != processId))
            return Waited::Reached;
        // A service that was just asked to stop may run for a moment longer.
        const bool onTheWay = state == goal.pendingState || goal.state == service_state::Stopped;
        if (!onTheWay)
            return Waited::Elsewhere;
        if (clock.tickCount() >= end)
            return Waited::TooLong;
        clock.sleep(PollInterval);
    }
    return Waited::QueryFailed;
}

int await(Ctl& ctl, ServiceInfo& service, const Goal& goal, quint32 timeoutSeconds, quint32 processId = 0)
{
    Waited waited = Waited::Reached;
    {
        const Progress progress(ctl.console, loadText(goal.waitText));
        waited = waitFor(service, goal, timeoutSeconds, processId);
    }
    const QString failed = loadText(goal.failureText) + u" \""_s + service.Name + u'"';
    switch (waited) {
    case Waited::Reached:
        return exit_code::Done;
    case Waited::Elsewhere:
        failure(ctl, failed, service.Reported.win32ExitCode);
        adviseState(ctl, service);
        return exit_code::Failed;
    case Waited::TooLong:
        failure(ctl, failed, error::ServiceRequestTimeout);
        adviseState(ctl, service);
        return exit_code::Failed;
    case Waited::QueryFailed:
        break;
    }
    return instanceFailure(ctl, service);
}

int startOne(Ctl& ctl, Instances&, ServiceInfo& service, const ControlOptions& options)
{
    ConsolePrompts prompts(ctl.console);
    if (!options.alone && service.StartPrerequisites(prompts) == ServiceInfo::PrerequisiteNotRunning) {
        instanceFailure(ctl, service);
        advisePrerequisites(ctl, service);
        return exit_code::Failed;
    }
    if (service.StartNow() != 0) {
        instanceFailure(ctl, service);
        adviseStart(ctl, service);
        return exit_code::Failed;
    }
    return options.noWait ? exit_code::Done : await(ctl, service, Started, options.timeoutSeconds);
}

int stopOne(Ctl& ctl, Instances& instances, ServiceInfo& service, const ControlOptions& options)
{
    const quint32 processId = service.QueryState() == 0 ? service.Reported.processId : 0;
    if (service.StopNow() != 0) {
        instanceFailure(ctl, service);
        adviseStop(ctl, instances, service);
        return exit_code::Failed;
    }
    return options.noWait ? exit_code::Done : await(ctl, service, Stopped, options.timeoutSeconds, processId);
}

/// Does it to each instance in turn, also after one that failed, and prints what became of them.
int control(Ctl& ctl, const ControlOptions& options,
    int (*act)(Ctl&, Instances&, ServiceInfo&, const ControlOptions&))
{
    Instances instances;
    if (!instances.read(ctl))
        return exit_code::Failed;
    const auto services = instances.select(ctl, options.names);
    if (!services)
        return exit_code::Failed;
    int code = exit_code::Done;
    for (ServiceInfo* const service : *services)
        code = std::max(code, act(ctl, instances, *service, options));
    return std::max(code, printStatus(ctl, *services, services->size() == 1));
}

int start(Ctl& ctl, const ControlOptions& options)
{
    return control(ctl, options, startOne);
}

int stop(Ctl& ctl, const ControlOptions& options)
{
    return control(ctl, options, stopOne);
}

struct StartTypeOptions
{
    QString name;
    QString type;
};

void declareStartType(const CommandParser& parser, StartTypeOptions& options)
{
    parser.addText("name", options.name, "Name of the instance").required().valueName("NAME");
    parser.addText("type", options.type, "automatic, manual or disabled")
        .required()
        .valueName("TYPE")
        .oneOf({u"automatic"_s, u"manual"_s, u"disabled"_s});
}

int setStartType(Ctl& ctl, const StartTypeOptions& options)
{
    Instances instances;
    if (!instances.read(ctl))
        return exit_code::Failed;
    ServiceInfo* const service = instances.find(ctl, options.name);
    if (!service)
        return exit_code::Failed;
    ConsolePrompts prompts(ctl.console);
    if (service->SetStartType(*startTypeOf(options.type), prompts) != 0)
        return instanceFailure(ctl, *service);
    return printStatus(ctl, {service}, true);
}

struct RemoveOptions
{
    QString name;
    bool yes = false;
};

void declareRemove(const CommandParser& parser, RemoveOptions& options)
{
    parser.addText("name", options.name, "Name of the instance").required().valueName("NAME");
    parser.addFlag("-y,--yes", options.yes, "Remove without asking");
}

int remove(Ctl& ctl, const RemoveOptions& options)
{
    if (!options.yes && !ctl.console.canAsk())
        return usageError(
            ctl, u"remove asks at a terminal, and there is none; --yes removes without asking"_s);
    ConsolePrompts prompts(ctl.console);
    quint32 refusal = error::Success;
    const int removed = ServiceApp().RemoveService(options.name, !options.yes, prompts, &refusal);
    if (removed != 0) {
        if (removed == NotRemoved)
            adviseRemoval(ctl, options.name, refusal);
        return exit_code::Failed;
    }
    if (ctl.json)
        printJson(ctl.console, {{"name"_L1, options.name}, {"removed"_L1, true}});
    return exit_code::Done;
}

} // namespace

void addControlSubcommands(Ctl& ctl, const CommandParser& parser)
{
    addSubcommand(ctl, parser, "start", "Start instances, and first the services that they need",
        Needs::Machine, declareStart, start);
    addSubcommand(ctl, parser, "stop", "Stop instances", Needs::Machine, declareControl, stop);
    addSubcommand(ctl, parser, "set-start-type", "Change when an instance starts", Needs::Machine,
        declareStartType, setStartType);
    addSubcommand(
        ctl, parser, "remove", "Remove an instance that is stopped", Needs::Machine, declareRemove, remove);
}

} // namespace quoril
