// metrics.

#include "ctl/metrics_text.h"

#include "ctl/instances.h"
#include "ctl/last_run.h"
#include "ctl/output.h"
#include "ctl/progress.h"
#include "ctl/subcommand.h"
#include "logs/log_runs.h"
#include "platform/clock.h"
#include "platform/machine.h"
#include "platform/system_info.h"

#include <QSet>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

struct MetricsOptions
{
    QString output;
    QStringList labels;
};

void declareMetrics(const CommandParser& parser, MetricsOptions& options)
{
    parser.addText("-o,--output", options.output, "File to replace instead of printing").valueName("FILE");
    parser.addTexts("--label", options.labels, "Label to add to every row, such as tree=north")
        .valueName("NAME=VALUE");
}

/// What was found of an instance; what can't be read of it has no rows.
struct Sighting
{
    const ServiceInfo& service;
    bool asked = false;
    std::optional<LogRun> run;
};

std::vector<Sighting> lookAt(std::vector<ServiceInfo>& services)
{
    std::vector<Sighting> sightings;
    sightings.reserve(services.size());
    QSet<QByteArray> names;
    for (ServiceInfo& service : services) {
        // Two names that differ in half characters alone are one text, and equal rows void the whole file.
        const QByteArray name = MetricsText::escaped(service.Name);
        if (names.contains(name))
            continue;
        names.insert(name);
        const bool asked = askState(service);
        sightings.push_back({service, asked, lastRunOf(service.LogFile)});
    }
    return sightings;
}

/// A series of 0 or 1 for each word that a state may have.
void addStates(MetricsText& text, const std::vector<Sighting>& sightings, const char* label,
    const QStringList& words, QString (*wordOf)(const ServiceInfo&))
{
    for (const Sighting& seen : sightings) {
        if (!seen.asked)
            continue;
        const QString current = wordOf(seen.service);
        if (!words.contains(current))
            continue;
        for (const QString& word : words)
            text.sample({{"name", seen.service.Name}, {label, word}}, word == current ? 1 : 0);
    }
}

void addServices(MetricsText& text, const std::vector<Sighting>& sightings)
{
    text.family("quoril_service_state", "State of the service: 1 for the one it has, 0 for the others.");
    addStates(text, sightings, "state", stateWords(),
        [](const ServiceInfo& service) { return stateWord(service.Reported.currentState); });
    text.family("quoril_service_start_mode", "Start type of the service: 1 for the one it has.");
    addStates(text, sightings, "start_mode", startTypeWords(),
        [](const ServiceInfo& service) { return startTypeWord(service.StartType); });
    text.family("quoril_service_exit_code",
        "Windows error number with which the service ended last; 1077 if it never ran.");
    for (const Sighting& seen : sightings) {
        if (seen.asked)
            text.sample({{"name", seen.service.Name}}, seen.service.Reported.win32ExitCode);
    }
    text.family("quoril_service_query_error",
        "Windows error number that asking for the state gave; 0 if the state is known.");
    for (const Sighting& seen : sightings)
        text.sample({{"name", seen.service.Name}}, seen.asked ? 0 : seen.service.Reason);
}

void addRuns(MetricsText& text, const std::vector<Sighting>& sightings)
{
    text.family(
        "quoril_run_start_timestamp_seconds", "When the last run of the instance began, by its own log.");
    for (const Sighting& seen : sightings) {
        const auto begin = seen.run ? momentOf(seen.run->firstTime) : std::nullopt;
        if (begin)
            text.sample({{"name", seen.service.Name}}, double(*begin));
    }
    text.family("quoril_run_messages", "Messages of the last run of the instance, by severity.");
    constexpr QStringView severities[] = {u"information", u"warning", u"error"};
    for (const Sighting& seen : sightings) {
        for (std::size_t level = 1; seen.run && level < seen.run->counts.levels.size(); ++level)
            text.sample({{"name", seen.service.Name}, {"severity", severities[level - 1]}},
                double(seen.run->counts.levels[level]));
    }
}

/// The labels as they were given; none, and the wrong one is reported, if one can't be used.
std::optional<std::vector<std::pair<QString, QString>>> commonLabels(Ctl& ctl, const QStringList& given)
{
    std::vector<std::pair<QString, QString>> labels;
    QStringList taken{u"name"_s, u"state"_s, u"start_mode"_s, u"severity"_s, u"computer"_s, u"version"_s};
    for (const QString& text : given) {
        const qsizetype sign = text.indexOf(u'=');
        const QString name = text.left(qMax<qsizetype>(sign, 0));
        if (!MetricsText::isLabelName(name) || taken.contains(name)) {
            usageError(ctl,
                u"\"%1\" is not a usable label; write NAME=VALUE such as tree=north, with a NAME that no other label has"_s
                    .arg(text));
            return std::nullopt;
        }
        taken.append(name);
        labels.emplace_back(name, text.sliced(sign + 1));
    }
    return labels;
}

int metrics(Ctl& ctl, const MetricsOptions& options)
{
    const auto labels = commonLabels(ctl, options.labels);
    if (!labels)
        return exit_code::Usage;
    const quint64 begin = machine().clock().tickCount();
    Instances instances;
    std::vector<Sighting> sightings;
    {
        const Progress progress(ctl.console, u"Reading the machine..."_s);
        // Without a list there is nothing to say of the machine, and the file before this one grows old.
        if (!instances.read(ctl))
            return exit_code::Failed;
        sightings = lookAt(instances.all());
    }
    MetricsText text(*labels);
    addServices(text, sightings);
    addRuns(text, sightings);
    text.family("quoril_machine_info", "The machine's name, and the version of quorilctl that looked at it.");
    const auto computer = machine().systemInfo().computerName();
    text.sample(
        {{"computer", computer ? *computer : QString()}, {"version", QStringLiteral(QUORIL_VERSION)}}, 1);
    text.family("quoril_scan_duration_seconds", "How long it took to gather these rows.");
    text.sample({}, double(machine().clock().tickCount() - begin) / 1000);
    if (!options.output.isEmpty())
        return replaceFile(ctl, options.output, text.take());
    QByteArray all = text.take();
    all.chop(1);
    ctl.console.lines(QString::fromUtf8(all));
    return exit_code::Done;
}

} // namespace

void addMetricsSubcommand(Ctl& ctl, const CommandParser& parser)
{
    addSubcommand(ctl, parser, "metrics", "Print the state of the machine for Prometheus", Needs::Machine,
        declareMetrics, metrics);
}

} // namespace quoril
