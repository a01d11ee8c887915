// logs.

#include "ctl/instances.h"
#include "ctl/last_run.h"
#include "ctl/moment.h"
#include "ctl/output.h"
#include "ctl/progress.h"
#include "ctl/subcommand.h"
#include "logs/log_table.h"

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

struct LogsOptions
{
    QString name;
    QString from;
    QString to;
    bool lastRun = false;
};

void declareLogs(const CommandParser& parser, LogsOptions& options)
{
    parser.addText("name", options.name, "Name of the instance").required().valueName("NAME");
    const ParsedOption from
        = parser.addText("--from", options.from, "Events of the Windows logs from this local time on");
    const ParsedOption to = parser.addText("--to", options.to, "Events up to 15 seconds behind this time");
    from.valueName("TIME");
    to.valueName("TIME");
    parser.addFlag("--last-run", options.lastRun, "Events of the instance's last run; this is the default")
        .excludes(from)
        .excludes(to);
}

/// False for a time that is none; told.
bool takePeriod(Ctl& ctl, const LogsOptions& options, ServiceInfo& service)
{
    const std::pair<const QString&, quint32&> ends[]
        = {{options.from, service.LogFrom}, {options.to, service.LogTo}};
    for (const auto& [text, end] : ends) {
        if (text.isEmpty())
            continue;
        const auto moment = parseMoment(text);
        if (!moment) {
            usageError(ctl, u"\"%1\" is no time; write 2026-11-30T18:00:00"_s.arg(text));
            return false;
        }
        end = quint32(*moment);
    }
    if (!options.from.isEmpty() && !options.to.isEmpty() && service.LogFrom > service.LogTo) {
        usageError(ctl, u"--from %1 is after --to %2"_s.arg(options.from, options.to));
        return false;
    }
    return true;
}

int logs(Ctl& ctl, const LogsOptions& options)
{
    ServiceInfo period;
    if (!takePeriod(ctl, options, period))
        return exit_code::Usage;
    Instances instances;
    if (!instances.read(ctl))
        return exit_code::Failed;
    ServiceInfo* const service = instances.find(ctl, options.name);
    if (!service)
        return exit_code::Failed;
    PanelTable table;
    {
        const Progress progress(ctl.console, u"Reading the logs..."_s);
        service->LogFrom = period.LogFrom;
        service->LogTo = period.LogTo;
        if (options.from.isEmpty() && options.to.isEmpty())
            takeLastRun(*service);
        table = BuildLogTable(*service);
    }
    printLogTable(ctl.console, table, ctl.json);
    return exit_code::Done;
}

} // namespace

void addLogSubcommands(Ctl& ctl, const CommandParser& parser)
{
    addSubcommand(ctl, parser, "logs", "Show the logs of an instance", Needs::Machine, declareLogs, logs);
}

} // namespace quoril
