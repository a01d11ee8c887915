// logs.

#include "ctl/instances.h"
#include "ctl/last_run.h"
#include "ctl/log_choice.h"
#include "ctl/moment.h"
#include "ctl/output.h"
#include "ctl/progress.h"
#include "ctl/subcommand.h"
#include "logs/log_table.h"
#include "platform/files.h"
#include "platform/machine.h"
#include "resources/resource_module.h"
#include "resources/text_ids.h"

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

struct LogsOptions
{
    QStringList names;
    QString from;
    QString to;
    QString run;
    QString priority;
    QString pattern;
    quint32 lines = LogRowFilter::AllRows;
    bool lastRun = false;
    bool listRuns = false;
    bool follow = false;
};

void declareLogs(const CommandParser& parser, LogsOptions& options)
{
    parser.addTexts("names", options.names, "Names of instances").required().valueName("NAME");
    const ParsedOption from
        = parser.addText("--from", options.from, "Windows events from this local time on");
    const ParsedOption to
        = parser.addText("--to", options.to, "Windows events up to 15 seconds after this time");
    from.valueName("TIME");
    to.valueName("TIME");
    const ParsedOption run = parser.addText(
        "--run", options.run, "One run: 0 is the last, -1 the one before, 1 the first in the log; or all");
    run.valueName("RUN");
    parser.addFlag("--last-run", options.lastRun, "The last run with its events; this is the default")
        .excludes(from)
        .excludes(to)
        .excludes(run);
    const ParsedOption lines = parser.addNumber("-n,--lines", options.lines, "Only the last N rows");
    lines.valueName("N");
    const ParsedOption severity
        = parser.addText("-p,--severity", options.priority, "Only warnings and errors, or only errors");
    severity.valueName("warning|error").oneOf({u"warning"_s, u"error"_s});
    const ParsedOption pattern = parser.addText("-g,--grep", options.pattern,
        "Only rows whose text matches; case matters only if the pattern has capitals");
    pattern.valueName("PATTERN");
    const ParsedOption listRuns
        = parser.addFlag("--list-runs", options.listRuns, "List the runs of the instance's own log");
    listRuns.excludes(run).excludes(lines).excludes(severity).excludes(pattern);
    parser.addFlag("-f,--follow", options.follow, "Keep printing new rows until Ctrl+C")
        .excludes(listRuns)
        .excludes(to);
}

std::optional<quint32> takeMoment(Ctl& ctl, const QString& text)
{
    if (text.isEmpty())
        return 0;
    const auto moment = parseMoment(text);
    if (!moment)
        usageError(ctl, u"\"%1\" is not a time; write 2026-11-30T18:00:00 or 2026-11-30"_s.arg(text));
    return moment ? std::optional(quint32(*moment)) : std::nullopt;
}

/// The number of a run, in the place of `run`. False for a text that is none, which is reported.
bool takeRun(Ctl& ctl, const QString& text, std::optional<qsizetype>& run)
{
    if (text.isEmpty())
        return true;
    bool isNumber = false;
    run = text.toLongLong(&isNumber);
    if (isNumber)
        return true;
    run.reset();
    if (text != u"all")
        usageError(ctl, u"\"%1\" is not a run; write 0, -1, 1 or all"_s.arg(text));
    return text == u"all";
}

/// None for an expression that is none, which is reported.
std::optional<QRegularExpression> takePattern(Ctl& ctl, const QString& text)
{
    const bool hasCapitals = std::any_of(text.begin(), text.end(), [](QChar unit) { return unit.isUpper(); });
    QRegularExpression pattern(text, QRegularExpression::UseUnicodePropertiesOption);
    if (!hasCapitals)
        pattern.setPatternOptions(pattern.patternOptions() | QRegularExpression::CaseInsensitiveOption);
    if (pattern.isValid())
        return pattern;
    usageError(ctl,
        u"\"%1\" is not a valid pattern: %2 at column %3"_s.arg(text, pattern.errorString())
            .arg(pattern.patternErrorOffset() + 1));
    return std::nullopt;
}

/// What the options choose. None if they can't be carried out, which is reported.
std::optional<LogChoice> choiceOf(Ctl& ctl, const LogsOptions& options)
{
    LogChoice choice;
    const auto from = takeMoment(ctl, options.from);
    const auto to = from ? takeMoment(ctl, options.to) : from;
    const auto pattern = takePattern(ctl, options.pattern);
    if (!from || !to || !pattern || !takeRun(ctl, options.run, choice.run))
        return std::nullopt;
    if (*from > *to && !options.to.isEmpty()) {
        usageError(ctl, u"--from %1 is after --to %2"_s.arg(options.from, options.to));
        return std::nullopt;
    }
    choice.from = *from;
    choice.to = *to;
    choice.filter.lastRows = options.lines;
    choice.filter.pattern = *pattern;
    if (!options.priority.isEmpty()) {
        const bool errors = options.priority.compare(u"error", Qt::CaseInsensitive) == 0;
        choice.filter.leastSeverity = std::size_t(errors ? RowSeverity::Error : RowSeverity::Warning);
    }
    return choice;
}

std::optional<LogRange> findRun(QIODevice& log, LogRange whole, std::optional<qsizetype> run)
{
    if (!run)
        return whole;
    if (*run <= 0)
        return findRunFromEnd(log, whole, -*run);
    const std::vector<LogRun> runs = listRuns(log, whole);
    return *run <= qsizetype(runs.size()) ? std::optional(runs[std::size_t(*run - 1)].range) : std::nullopt;
}

/// Says which log can't be read and why. The exit code.
int unreadableLog(Ctl& ctl, const ServiceInfo& service)
{
    const auto log = machine().files().openForReading(service.LogFile);
    return failure(ctl, u"The log of %1 can't be read: %2."_s.arg(service.Name, service.LogFile),
        log ? error::NotEnoughMemory : log.errorNumber());
}

int printLogs(Ctl& ctl, const std::vector<ServiceInfo*>& services, const LogChoice& choice)
{
    using Form = LogPrinter::Form;
    const Form text = services.size() > 1 ? Form::NamedText : Form::Text;
    LogPrinter printer(ctl.console, ctl.json ? Form::JsonArray : text, choice.filter);
    int code = exit_code::Done;
    for (ServiceInfo* const service : services) {
        PanelTable table;
        {
            const Progress progress(ctl.console, u"Reading the logs..."_s);
            std::optional<LogRange> range;
            if (!chooseLogs(ctl, *service, choice, range)) {
                code = exit_code::Failed;
                continue;
            }
            LogTableBuilder builder;
            builder.addWindowsLogs(*service);
            if (!builder.addEmulatorLog(*service, range))
                code = unreadableLog(ctl, *service);
            table = builder.take();
        }
        printer.print(service->Name, table);
    }
    return code;
}

QStringList cellsOf(const LogRun& run, qsizetype number, qsizetype count)
{
    const auto& levels = run.counts.levels;
    return {QString::number(number - count), QString::number(number), logDateText(run.firstTime),
        logDateText(run.lastTime), QString::number(run.counts.messages), QString::number(levels[2]),
        QString::number(levels[3])};
}

QJsonObject jsonOf(const LogRun& run, qsizetype number, qsizetype count)
{
    const auto& levels = run.counts.levels;
    return {{"index"_L1, number - count}, {"number"_L1, number}, {"first"_L1, logDateText(run.firstTime)},
        {"last"_L1, logDateText(run.lastTime)}, {"messages"_L1, run.counts.messages},
        {"warnings"_L1, levels[2]}, {"errors"_L1, levels[3]}};
}

int printRuns(Ctl& ctl, const std::vector<ServiceInfo*>& services)
{
    int code = exit_code::Done;
    const bool isNamed = services.size() > 1;
    QStringList headings{
        u"INDEX"_s, u"NUMBER"_s, u"FIRST"_s, u"LAST"_s, u"MESSAGES"_s, u"WARNINGS"_s, u"ERRORS"_s};
    TextTable table((isNamed ? QStringList(u"NAME"_s) : QStringList()) + headings);
    std::optional<JsonArray> array;
    if (ctl.json)
        array.emplace(ctl.console);
    for (const ServiceInfo* const service : services) {
        const auto log = machine().files().openForReading(service->LogFile);
        if (!log) {
            const quint32 text
                = service->LogFile.isEmpty() ? text::LogFileNotDefined : text::LogFileNotOpened;
            code = failure(ctl, service->Name + u": "_s + loadText(text),
                service->LogFile.isEmpty() ? 0 : log.errorNumber());
            continue;
        }
        std::vector<LogRun> runs;
        {
            const Progress progress(ctl.console, u"Reading the log..."_s);
            runs = listRuns(**log, wholeLog(**log));
        }
        const auto count = qsizetype(runs.size());
        for (qsizetype number = 1; number <= count; ++number) {
            const LogRun& run = runs[std::size_t(number - 1)];
            table.add((isNamed ? QStringList(service->Name) : QStringList()) + cellsOf(run, number, count));
            if (!array)
                continue;
            QJsonObject object = jsonOf(run, number, count);
            object.insert("name"_L1, service->Name);
            array->add(object);
        }
    }
    if (!ctl.json)
        table.print(ctl.console);
    return code;
}

int logs(Ctl& ctl, const LogsOptions& options)
{
    const auto choice = choiceOf(ctl, options);
    if (!choice)
        return exit_code::Usage;
    Instances instances;
    if (!instances.read(ctl))
        return exit_code::Failed;
    const auto services = instances.select(ctl, options.names);
    if (!services)
        return exit_code::Failed;
    if (options.listRuns)
        return printRuns(ctl, *services);
    return options.follow ? followLogs(ctl, *services, *choice) : printLogs(ctl, *services, *choice);
}

} // namespace

bool chooseLogs(Ctl& ctl, ServiceInfo& service, const LogChoice& choice, std::optional<LogRange>& range)
{
    service.LogFrom = choice.from;
    service.LogTo = choice.to;
    if (service.LogFile.isEmpty())
        return true;
    const auto log = machine().files().openForReading(service.LogFile);
    if (!log)
        return true;
    const LogRange whole = wholeLog(**log);
    range = findRun(**log, whole, choice.run);
    if (!range && choice.run != 0) {
        failure(ctl,
            u"The log of %1 has no run %2; see \"quorilctl logs --list-runs %1\"."_s.arg(service.Name)
                .arg(*choice.run),
            0);
        return false;
    }
    if (range && choice.from == 0 && choice.to == 0)
        takeRunPeriod(service, **log, *range, range->end == whole.end);
    return true;
}

void addLogSubcommands(Ctl& ctl, const CommandParser& parser)
{
    addSubcommand(ctl, parser, "logs", "Show the logs of an instance", Needs::Machine, declareLogs, logs);
}

} // namespace quoril
