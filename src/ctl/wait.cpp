// wait.

#include "ctl/instances.h"
#include "ctl/output.h"
#include "ctl/progress.h"
#include "ctl/subcommand.h"
#include "platform/clock.h"
#include "platform/machine.h"

#include <algorithm>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr quint32 PollInterval = 200;

struct WaitOptions
{
    QStringList names;
    QString state;
    quint32 timeoutSeconds = 60;
};

void declareWait(const CommandParser& parser, WaitOptions& options)
{
    parser.addTexts("names", options.names, "Names of instances").required().valueName("NAME");
    parser.addText("--for", options.state, "running or stopped")
        .required()
        .valueName("STATE")
        .oneOf({u"running"_s, u"stopped"_s});
    parser.addDuration("--timeout", options.timeoutSeconds, 0, "Longest wait, by default 60s; 0 looks once");
}

/// Drops those that have got there.
void dropArrived(std::vector<ServiceInfo*>& services, quint32 state)
{
    const auto arrived = [state](ServiceInfo* service) {
        return service->QueryState() == 0 && service->Reported.currentState == state;
    };
    services.erase(std::remove_if(services.begin(), services.end(), arrived), services.end());
}

QStringList namesOf(const std::vector<ServiceInfo*>& services)
{
    QStringList names;
    for (const ServiceInfo* const service : services)
        names.append(service->Name);
    return names;
}

int wait(Ctl& ctl, const WaitOptions& options)
{
    Instances instances;
    if (!instances.read(ctl))
        return exit_code::Failed;
    auto missing = instances.select(ctl, options.names);
    if (!missing)
        return exit_code::Failed;
    const QString goal = options.state.toLower();
    const quint32 state = goal == u"running" ? service_state::Running : service_state::Stopped;
    Clock& clock = machine().clock();
    const quint64 end = clock.tickCount() + quint64(options.timeoutSeconds) * 1000;
    {
        const Progress progress(ctl.console, u"Waiting until they are %1..."_s.arg(goal));
        for (dropArrived(*missing, state); !missing->empty(); dropArrived(*missing, state)) {
            const quint64 now = clock.tickCount();
            if (now >= end)
                break;
            clock.sleep(quint32(std::min<quint64>(PollInterval, end - now)));
        }
    }
    if (!missing->empty())
        ctl.console.report(u"Not %1 after %2 s: %3"_s.arg(
            goal, QString::number(options.timeoutSeconds), namesOf(*missing).join(u", "_s)));
    (void)printStatus(ctl, *missing, false);
    return missing->empty() ? exit_code::Done : exit_code::Failed;
}

} // namespace

void addWaitSubcommand(Ctl& ctl, const CommandParser& parser)
{
    addSubcommand(ctl, parser, "wait",
        "Wait until instances are running or stopped; print those that are not", Needs::Machine, declareWait,
        wait);
}

} // namespace quoril
