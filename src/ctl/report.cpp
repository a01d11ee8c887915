// report.

#include "ctl/console_prompts.h"
#include "ctl/instances.h"
#include "ctl/last_run.h"
#include "ctl/output.h"
#include "ctl/progress.h"
#include "ctl/subcommand.h"
#include "report/problem_report.h"
#include "resources/resource_module.h"
#include "resources/text_ids.h"

#include <QFile>
#include <QFileInfo>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

struct ReportOptions
{
    QString name;
    QString output;
    bool executables = false;
};

void declareReport(const CommandParser& parser, ReportOptions& options)
{
    parser.addText("name", options.name, "Name of the instance").required().valueName("NAME");
    parser.addText("-o,--output", options.output, "File to write, by default QuorilMailReport.txt")
        .valueName("FILE");
    parser.addFlag("--executables", options.executables, "Also describe executables and drivers");
}

int report(Ctl& ctl, const ReportOptions& options)
{
    Instances instances;
    if (!instances.read(ctl))
        return exit_code::Failed;
    ServiceInfo* const service = instances.find(ctl, options.name);
    if (!service)
        return exit_code::Failed;
    const QString file = options.output.isEmpty() ? u"QuorilMailReport.txt"_s : options.output;
    // Gathering takes its time: what can't be written is reported before.
    if (options.output.isEmpty() && QFileInfo(file).isSymLink()) {
        ctl.console.report(u"\"%1\" is a link, which only --output follows."_s.arg(file));
        return exit_code::Failed;
    }
    if (QFile output(file); !output.open(QIODevice::WriteOnly | QIODevice::Append)) {
        const int code = failure(ctl, loadText(text::OutputNotOpened), error::Success);
        ctl.console.report(u"\"%1\" can't be written: %2"_s.arg(file, output.errorString()));
        return code;
    }
    takeLastRun(*service);
    const auto askFileName = [&file](const QString&) { return file; };
    ConsolePrompts prompts(ctl.console);
    bool written = false;
    {
        const Progress progress(ctl.console, u"Gathering the report..."_s);
        written = mailProblemReport(*service, prompts, askFileName,
            {.describesExecutables = options.executables, .removesLeftovers = true});
    }
    if (ctl.json)
        printJson(ctl.console, {{"name"_L1, service->Name}, {"file"_L1, file}, {"written"_L1, written}});
    return written ? exit_code::Done : exit_code::Failed;
}

} // namespace

void addReportSubcommand(Ctl& ctl, const CommandParser& parser)
{
    addSubcommand(ctl, parser, "report", "Write the problem report of an instance", Needs::Machine,
        declareReport, report);
}

} // namespace quoril
