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

void declareLogs(CLI::App& app, LogsOptions& options)
{
    addText(app, "name", options.name, "Name of the instance")->required()->type_name("NAME");
    CLI::Option* const from
        = addText(app, "--from", options.from, "Events of the Windows logs from this local time on");
    CLI::Option* const to = addText(app, "--to", options.to, "Events up to 15 seconds behind this time");
    from->type_name("TIME");
    to->type_name("TIME");
    app.add_flag("--last-run", options.lastRun, "Events of the instance's last run; this is the default")
        ->excludes(from)
        ->excludes(to);
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

void addLogSubcommands(Ctl& ctl, CLI::App& app)
{
    addSubcommand(ctl, app, "logs", "Show the logs of an instance", Needs::Machine, declareLogs, logs);
}

} // namespace quoril
