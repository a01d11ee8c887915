// log, events: files of the host, read by themselves.

#include "ctl/event_text.h"
#include "ctl/log_file_printer.h"
#include "ctl/output.h"
#include "ctl/progress.h"
#include "ctl/subcommand.h"
#include "formats/evt_reader.h"
#include "formats/evtx_reader.h"
#include "logs/log_runs.h"

#include <QFile>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

struct FileOptions
{
    QString path;
    bool summary = false;
};

void declareFile(const CommandParser& parser, FileOptions& options)
{
    parser.addText("file", options.path, "The file").required().valueName("FILE");
    parser.addFlag("--summary", options.summary, "Print counts only");
}

/// Opens the file; a failure is reported.
bool open(Ctl& ctl, QFile& file)
{
    if (file.open(QIODevice::ReadOnly))
        return true;
    ctl.console.report(file.fileName() + u": "_s + file.errorString());
    return false;
}

/// Counts with their names, in the order in which they are shown.
void printSummary(Ctl& ctl, const std::vector<std::pair<QString, QJsonValue>>& summary)
{
    QJsonObject object;
    TextTable table({u"WHAT"_s, u"COUNT"_s});
    for (const auto& [name, value] : summary) {
        object.insert(name, value);
        if (!value.isNull())
            table.add({name, value.toVariant().toString()});
    }
    if (ctl.json)
        printJson(ctl.console, object);
    else
        table.print(ctl.console);
}

void printLogSummary(Ctl& ctl, const LogCounts& counts)
{
    const auto& levels = counts.levels;
    printSummary(ctl,
        {{u"messages"_s, counts.messages}, {u"lines"_s, counts.lines}, {u"information"_s, levels[1]},
            {u"warnings"_s, levels[2]}, {u"errors"_s, levels[3]}});
}

int log(Ctl& ctl, const FileOptions& options)
{
    QFile file(options.path);
    if (!open(ctl, file))
        return exit_code::Failed;
    LogCounts counts;
    if (options.summary) {
        const Progress progress(ctl.console, u"Reading %1..."_s.arg(options.path));
        counts = countLog(file, wholeLog(file));
    } else {
        counts.messages = printLogFile(ctl.console, file, ctl.json);
    }
    if (counts.messages == 0 && file.size() > 0) {
        ctl.console.report(
            u"\"%1\" is not a log of the emulator: no line in it begins a message."_s.arg(options.path));
        return exit_code::Failed;
    }
    if (options.summary)
        printLogSummary(ctl, counts);
    else if (counts.messages == 0 && ctl.json)
        ctl.console.bytes("[]\n");
    return exit_code::Done;
}

template <typename Reader> void printEvents(Ctl& ctl, Reader& reader)
{
    EventEntry entry;
    EventText text;
    if (ctl.json) {
        JsonArray array(ctl.console);
        while (reader.next(entry))
            array.add(text.json(entry));
        return;
    }
    while (reader.next(entry))
        ctl.console.utf8Line(text.line(entry), EventText::styleOf(entry));
}

template <typename Reader> void printEventSummary(Ctl& ctl, Reader& reader, const QString& path)
{
    qint64 records = 0;
    qint64 errors = 0;
    qint64 warnings = 0;
    quint32 first = std::numeric_limits<quint32>::max();
    quint32 last = 0;
    {
        const Progress progress(ctl.console, u"Reading %1..."_s.arg(path));
        for (EventEntry entry; reader.next(entry); ++records) {
            errors += entry.eventType == event_type::Error;
            warnings += entry.eventType == event_type::Warning;
            first = std::min(first, entry.timeGenerated);
            last = std::max(last, entry.timeGenerated);
        }
    }
    const auto time
        = [records](quint32 moment) { return records > 0 ? EventText::utcText(moment) : QJsonValue(); };
    printSummary(ctl,
        {{u"records"_s, records}, {u"errors"_s, errors}, {u"warnings"_s, warnings},
            {u"damaged"_s, qint64(reader.damage().records)}, {u"first"_s, time(first)},
            {u"last"_s, time(last)}});
}

template <typename Reader> void printReader(Ctl& ctl, const FileOptions& options, Reader& reader)
{
    if (options.summary)
        printEventSummary(ctl, reader, options.path);
    else
        printEvents(ctl, reader);
    if (reader.damage().any())
        ctl.console.report(options.path + u": "_s + reader.damage().text());
}

int events(Ctl& ctl, const FileOptions& options)
{
    QFile file(options.path);
    if (!open(ctl, file))
        return exit_code::Failed;
    if (auto xml = EvtxReader::open(file)) {
        printReader(ctl, options, *xml);
        return exit_code::Done;
    }
    if (auto classic = EvtReader::open(file)) {
        printReader(ctl, options, *classic);
        return exit_code::Done;
    }
    ctl.console.report(
        u"\"%1\" is not an event log: it is neither an .evtx nor an .Evt file."_s.arg(options.path));
    return exit_code::Failed;
}

} // namespace

void addFileSubcommands(Ctl& ctl, const CommandParser& parser)
{
    addSubcommand(ctl, parser, "log", "Print a log file of the emulator", Needs::Nothing, declareFile, log);
    addSubcommand(ctl, parser, "events", "Print an event log file (.evtx or .Evt)", Needs::Nothing,
        declareFile, events);
}

} // namespace quoril
