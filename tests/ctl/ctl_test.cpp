#include "ctl/ctl.h"

#include "ctl/metrics_text.h"
#include "ctl_fixture.h"
#include "platform/terminal_text.h"
#include "support/real_data.h"
#include "support/temporary_tree.h"
#include "support/time_zone.h"

#include <QFile>

namespace quoril::test {
namespace {

QByteArray fileContent(const QString& below)
{
    QFile file(QStringLiteral(QUORIL_SOURCE_DIR "/") + below);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << below;
    return file.readAll();
}

/// The fields and their types that the documentation lists for a subcommand.
QMap<QString, QString> documentedFields(const QString& subcommand)
{
    QMap<QString, QString> fields;
    bool here = false;
    for (const QString& line : QString::fromUtf8(fileContent(u"docs/quorilctl.md"_s)).split(u'\n')) {
        if (line.startsWith(u"##"_s))
            here = line.mid(4).split(u", "_s).contains(subcommand);
        const QStringList cells = line.split(u'|');
        if (!here || !line.startsWith(u"| `"_s))
            continue;
        for (const QString& name : cells[1].split(u','))
            fields.insert(name.trimmed().remove(u'`'), cells[2].trimmed());
    }
    return fields;
}

QString typeOf(const QJsonValue& value)
{
    static const QMap<QJsonValue::Type, QString> types{{QJsonValue::String, u"string"_s},
        {QJsonValue::Double, u"number"_s}, {QJsonValue::Array, u"array"_s}, {QJsonValue::Bool, u"bool"_s}};
    return types.value(value.type());
}

QMap<QString, QString> fieldsOf(const QJsonObject& object)
{
    QMap<QString, QString> fields;
    for (auto field = object.begin(); field != object.end(); ++field)
        fields.insert(field.key(), typeOf(field.value()));
    return fields;
}

#ifdef Q_OS_WIN
constexpr bool HostNames = false;
#else
constexpr bool HostNames = true; ///< a file may have any name
#endif

TEST_F(CtlTest, EventsOfTheSampleLogsAreAsTheyWereMade)
{
    for (const QString& name : {u"tests/data/sample.evtx"_s, u"tests/data/sample.evt"_s}) {
        const QByteArray log = fileContent(name);
        const QString copy = file(u"log"_s, log);
        EXPECT_EQ(run({u"--json"_s, u"events"_s, copy}).output, fileContent(name + u".json"_s));
        EXPECT_TRUE(run({u"events"_s, copy}).output.contains("two \"quoted\" lines\n"));
        // The second record's size is damaged, and with it the record.
        QByteArray bytes = log;
        const QByteArray mark = name.endsWith(u'x') ? QByteArray("**\0\0", 4) : QByteArray("LfLe");
        const qsizetype first = bytes.indexOf(mark, 100);
        bytes[bytes.indexOf(mark, first + 4) + (mark == "LfLe" ? -4 : 4)] ^= 4;
        const CtlRun damaged = run({u"--json"_s, u"events"_s, u"--summary"_s, file(u"log"_s, bytes)});
        EXPECT_EQ(damaged.json()["damaged"_L1].toInt(), 1);
        EXPECT_EQ(damaged.json()["records"_L1].toInt(), name.endsWith(u'x') ? 3 : 2);
        EXPECT_TRUE(damaged.errors.contains("log: 1 record could not be decoded"))
            << damaged.errors.constData();
    }
}

TEST_F(CtlTest, CheckReadsTheHivesAndLogsOfAMachine)
{
    const TemporaryTree tree;
    tree.makeFolder(u"Windows/System32/winevt/Logs"_s);
    tree.write(u"Windows/System32/winevt/Logs/System.evtx"_s, fileContent(u"tests/data/sample.evtx"_s));
    const auto check = [&tree](const QString& file) {
        TreeMachine machine(tree.root());
        const CtlRun done = runCtlOn(&machine, {u"--json"_s, u"machine"_s, u"check"_s});
        for (const QJsonValue& each : done.json().array()) {
            EXPECT_EQ(fieldsOf(each.toObject()), documentedFields(u"machine check"_s));
            if (each["path"_L1].toString().endsWith(u'\\' + file))
                return std::tuple(done.code, each["state"_L1].toString(), each["pages"_L1].toInt());
        }
        return std::tuple(done.code, QString(), 0);
    };
    EXPECT_EQ(check(u"SYSTEM"_s), std::tuple(0, u"clean"_s, 0));
    EXPECT_EQ(check(u"System.evtx"_s), std::tuple(0, u"clean"_s, 0));
    const QByteArray hive = realData(u"NTUSER-dirty"_s);
    if (!hive.isEmpty()) {
        tree.write(u"Windows/System32/config/SYSTEM"_s, hive);
        EXPECT_EQ(check(u"SYSTEM"_s), std::tuple(1, u"stale"_s, 0));
        tree.write(u"Windows/System32/config/system.log1"_s, realData(u"NTUSER-dirty.LOG1"_s));
        EXPECT_EQ(check(u"SYSTEM"_s), std::tuple(0, u"recovered"_s, 132));
        EXPECT_EQ(check(u"system.log1"_s), std::tuple(0, u"applied"_s, 132));
        {
            TreeMachine machine(tree.root());
            ASSERT_TRUE((*keyAt(machine.registry(), u"SYSTEM"))->setDWord(u"New", 1));
        }
        EXPECT_EQ(check(u"SYSTEM"_s), std::tuple(0, u"clean"_s, 0));
        EXPECT_EQ(check(u"system.log1"_s), std::tuple(0, u"unused"_s, 0));
    }
    tree.write(
        u"Windows/System32/config/SYSTEM"_s, tree.read(u"Windows/System32/config/SYSTEM"_s).first(4100));
    EXPECT_EQ(check(u"SYSTEM"_s), std::tuple(1, u"damaged"_s, 0));
}

TEST_F(CtlTest, JsonHasTheDocumentedFields)
{
    const EventEntry event = eventOf(0, u"QUORIL"_s, {u"one"_s});
    const QString events = file(u"a.evt"_s, eventLog({event, event}));
    file(u"a.log"_s, Log);
    // What prints no JSON, and what an executable that registers itself prints, which is that of status.
    QStringList left = subcommands();
    for (const QString& other : {u"machine"_s, u"metrics"_s, u"install"_s, u"update"_s})
        EXPECT_TRUE(left.removeOne(other)) << other;
    for (const QString& line : {u"list"_s, u"show CERES"_s, u"status"_s, u"status CERES"_s, u"start CERES"_s,
             u"stop CERES"_s, u"set-start-type Iris Automatic"_s, u"logs CERES"_s,
             u"logs --list-runs CERES"_s, u"log FILE.log"_s, u"log --summary FILE.log"_s,
             u"events FILE.evt"_s, u"events --summary FILE.evt"_s, u"schedule start@+0=Iris stop@+0=iris"_s,
             u"report CERES --output FILE"_s, u"wait CERES --for running --timeout 0"_s,
             u"remove --yes Iris"_s, u"machine create FILEmachine"_s}) {
        const QString name = line.section(
            u' ', 0, line.contains(QRegularExpression(u" --summary| --list|^machine"_s)) ? 1 : 0);
        left.removeOne(name);
        const CtlRun done = run(words(line) << u"--json"_s);
        EXPECT_EQ(done.code, int(line.startsWith(u"wait"_s))) << done.errors;
        const QJsonDocument json = done.json();
        const QJsonArray objects = json.isArray() ? json.array() : QJsonArray{json.object()};
        ASSERT_FALSE(objects.isEmpty()) << done.output;
        const auto fields = documentedFields(name);
        ASSERT_FALSE(fields.isEmpty()) << name;
        for (const QJsonValue& object : objects)
            EXPECT_EQ(fieldsOf(object.toObject()), fields) << line;
    }
    EXPECT_EQ(left, QStringList()) << "subcommands whose fields nobody compares";
    EXPECT_EQ(run({u"events"_s, u"--summary"_s, u"--json"_s, events}).json()["records"_L1].toInt(), 2);
}

TEST_F(CtlTest, SaysWhatIsWrongAndEndsWithItsCode)
{
    m_machine.addInstance(u"Locked"_s).errors
        = {{u"start"_s, error::AccessDenied}, {u"delete"_s, error::AccessDenied}};
    m_machine.addInstance(u"Unread"_s);
    m_machine.fakeRegistry.load(
        u"[SYSTEM\\CurrentControlSet\\Services\\Unread\\Parameters\\session\\log\\0]\n"
        u"Value=C:\\unread.log\n");
    auto& needed = m_machine.addInstance(u"Runs"_s);
    needed.states = m_machine.addInstance(u"Uses"_s, {u"runs"_s}).states = {service_state::Running};
    needed.errors = {{u"control"_s, error::DependentServicesRunning}};
    m_machine.addInstance(u"Broken"_s, {u"Lame"_s});
    auto& lame = m_machine.fakeServices.service(u"Lame"_s);
    lame.config.startType = start_type::Disabled;
    lame.errors = {{u"start"_s, error::ServiceDisabled}};
    const QByteArray noFile = "anone: " + qt_error_string(ENOENT).toUtf8();
    file(u"atext"_s, "text");
    struct Case
    {
        QString line;
        int code;
        QByteArray says;
    };
    const Case cases[] = {
        {u""_s, 2, "subcommand is required"},
        {u"nope"_s, 2, "\"nope\" is not a subcommand"},
        {u"list --bogus"_s, 2, "--bogus"},
        {u"start"_s, 2, "start: give at least one NAME"},
        {u"wait CERES --for paused"_s, 2, "paused"},
        {u"install X"_s, 2, "install: give --config FILE --executable FILE"},
        {u"list --machine ''"_s, 2, "--machine: it is empty"},
        {u"start CERES --timeout 0"_s, 2, "\"0\" is not a time from 1s to 24h"},
        {u"metrics --label name=x"_s, 2, "\"name=x\" is not a usable label"},
        {u"metrics -o /none/a"_s, 1, "\"/none/a\" can't be written: "},
        {u"logs Unread"_s, 1, "The log of Unread can't be read: C:\\unread.log. Reason: "},
        {u"start CERES --no-wait --timeout 3"_s, 2, "excludes"},
        {u"set-start-type CERES boot"_s, 2, "boot"},
        {u"logs CERES --from yesterday"_s, 2, "\"yesterday\" is not a time"},
        {u"logs CERES --from 2026-02-01 --to 2026-01-01"_s, 2, "--from 2026-02-01 is after --to 2026-01-01"},
        {u"logs CERES --run second"_s, 2, "\"second\" is not a run"},
        {u"logs CERES --run -1"_s, 1, "The log of CERES has no run -1; see"},
        {u"logs CERES -n some"_s, 2, "\"some\" is not a whole number"},
        {u"logs CERES -g a(b"_s, 2, "\"a(b\" is not a valid pattern: "},
        {u"logs CERES -f --list-runs"_s, 2, "excludes"},
        {u"schedule start@+0=CERES CERES"_s, 2, "\"CERES\" is not an order: it starts with"},
        {u"schedule stop@24:00=CERES"_s, 2, "is not an order: \"24:00\" is not a time"},
        {u"schedule stop@18:00"_s, 2, "is not an order: it has no =NAME"},
        {u"remove CERES"_s, 2, "--yes"},
        {u"status Nemo"_s, 1,
            "SERVICE-MANAGER: Failed to connect to service Nemo Reason: No such service. (0x424)\n"
            "No instance \"Nemo\"; see \"quorilctl list\".\n"},
        {u"start Iris Nemo"_s, 1, "No instance \"Nemo\""},
        {u"schedule start@+0=Nemo"_s, 1, "No instance \"Nemo\""},
        {u"remove --yes Nemo"_s, 1, "The service is not installed yet.\nNo instance \"Nemo\""},
        {u"remove --yes Runs"_s, 1, "Runs is running; stop it first"},
        {u"remove --yes Locked"_s, 1, "Locked can't be removed: Access is denied. (0x5)"},
        {u"stop Runs"_s, 1, "These need Runs and are running; stop them first: Uses"},
        {u"start Broken"_s, 1, "Broken needs \"Lame\", which is stopped and disabled"},
        {u"report CERES -o /none/a"_s, 1, "\"/none/a\" can't be written: "},
        {u"start Locked"_s, 1, "Failed to start the service \"Locked\" Reason: Access is denied. (0x5)"},
        {u"log FILEnone"_s, 1, noFile},
        {u"events FILEtext"_s, 1, "atext\" is not an event log"},
        {u"log FILEtext"_s, 1, "atext\" is not a log of the emulator"},
    };
    for (const Case& each : cases) {
        const CtlRun done = run(words(each.line));
        EXPECT_EQ(done.code, each.code) << each.line;
        EXPECT_TRUE(done.errors.contains(each.says)) << each.says << "\n" << done.errors;
    }
    EXPECT_TRUE(m_machine.calls.takeLog().filter(u"start Iris"_s).isEmpty()) << "nothing is half done";
    // One that can't be asked is reported, and the others stand.
    m_machine.fakeServices.service(u"Locked"_s).errors = {{u"queryStatus"_s, error::AccessDenied}};
    const CtlRun all = run({u"status"_s});
    EXPECT_EQ(all.code, 1);
    EXPECT_TRUE(
        all.output.simplified().startsWith("CERES stopped manual Iris stopped manual Locked unknown unknown"))
        << all.output;
    EXPECT_TRUE(all.errors.contains("Locked") && all.errors.contains("(0x5)")) << all.errors;
    // So is one whose configuration is too long: its start type is not that of a new record.
    m_machine.fakeServices.service(u"Locked"_s).errors = {{u"queryConfig"_s, error::InsufficientBuffer}};
    const CtlRun one = run({u"status"_s, u"Locked"_s});
    EXPECT_EQ(one.code, 1);
    EXPECT_EQ(one.output.simplified(), "Locked stopped unknown");
    EXPECT_TRUE(one.errors.contains("0x7A")) << one.errors;
    // A stop is done when what was asked has ended, though somebody started the service anew.
    auto& again = m_machine.fakeServices.service(u"Iris"_s);
    again.states = again.afterStop = {service_state::Running};
    again.processId = 7;
    EXPECT_EQ(run({u"stop"_s, u"Iris"_s, u"--timeout"_s, u"1"_s}).code, 0);
    const CtlRun nowhere = runCtlOn(nullptr, {u"list"_s, u"--machine"_s, u"/x"_s});
    EXPECT_EQ(nowhere.code, 1);
    EXPECT_EQ(nowhere.errors, "no machine in /x\n");
}

TEST_F(CtlTest, StartsPrerequisitesFirstAndWaitsForTheState)
{
    auto& ceres = m_machine.fakeServices.service(u"CERES"_s);
    ceres.afterStart = {service_state::StartPending, service_state::StartPending, service_state::Running};
    const auto started = [this](const QStringList& arguments) {
        m_machine.calls.takeLog();
        const CtlRun done = run(arguments);
        return m_machine.calls.takeLog().filter(QRegularExpression(u"^start "_s)).join(u',') + u' '
            + QString::number(done.code) + u' ' + QString::fromUtf8(done.output).simplified();
    };
    EXPECT_EQ(started({u"start"_s, u"ceres"_s}), u"start Licence,start CERES 0 CERES running manual");
    ceres.states = {service_state::Stopped};
    EXPECT_EQ(started({u"start"_s, u"CERES"_s, u"--no-wait"_s, u"--no-prerequisites"_s}),
        u"start CERES 0 CERES start-pending manual");

    ceres.states = {service_state::Stopped};
    ceres.afterStart = {service_state::StartPending, service_state::Stopped};
    EXPECT_EQ(run({u"start"_s, u"CERES"_s}).code, 1);
    ceres.afterStart = {service_state::StartPending};
    const qint64 before = m_machine.fakeClock.now();
    const CtlRun late = run({u"start"_s, u"CERES"_s, u"--timeout"_s, u"7"_s});
    EXPECT_EQ(late.code, 1);
    EXPECT_TRUE(late.errors.contains("0x41D")) << late.errors;
    EXPECT_EQ(m_machine.fakeClock.now() - before, 7);
    ceres.afterStop = {service_state::Running, service_state::StopPending, service_state::Stopped};
    EXPECT_EQ(run({u"stop"_s, u"CERES"_s}).code, 0);
}

TEST_F(CtlTest, WaitsUntilAllAreThereOrSaysWhichAreNot)
{
    auto& ceres = m_machine.fakeServices.service(u"CERES"_s);
    const QStringList wait{u"wait"_s, u"CERES"_s, u"Iris"_s, u"--timeout"_s, u"2s"_s, u"--for"_s};
    EXPECT_EQ(run(wait + QStringList(u"stopped"_s)).output, "");
    ceres.states = {service_state::StartPending, service_state::StartPending, service_state::Running};
    const qint64 before = m_machine.fakeClock.now();
    const CtlRun late = run(wait + QStringList(u"RUNNING"_s));
    EXPECT_EQ(late.code, 1);
    EXPECT_EQ(late.output, "Iris  stopped  manual\n");
    EXPECT_EQ(late.errors, "Not running after 2 s: Iris\n");
    EXPECT_EQ(m_machine.fakeClock.now() - before, 2);
}

TEST_F(CtlTest, MetricsHaveOfEachInstanceWhatCanBeRead)
{
    EXPECT_EQ(MetricsText::escaped(u"a\"b\\c\nd\x1b"), "a\\\"b\\\\c\\nd\x1b");
    m_machine.addInstance(u"half\xDC00"_s);
    m_machine.addInstance(u"half\xDC01"_s);
    m_machine.addInstance(u"Locked"_s).errors = {{u"queryStatus"_s, error::AccessDenied}};
    useTimeZone("UTC");
    const QString path = m_folder.filePath(u"m.prom"_s);
    const CtlRun done = run({u"metrics"_s, u"--label"_s, u"tree=\\"_s, u"-o"_s, path});
    EXPECT_EQ(done.code, 0) << done.errors;
    QFile written(path);
    ASSERT_TRUE(written.open(QIODevice::ReadOnly));
    const QByteArray text = written.readAll().replace("tree=\"\\\\\",", "");
    for (const char* row :
        {"_state{name=\"CERES\",state=\"stopped\"} 1\n", "_state{name=\"CERES\",state=\"running\"} 0\n",
            "_start_mode{name=\"Iris\",start_mode=\"manual\"} 1\n", "_query_error{name=\"Locked\"} 5\n",
            "_timestamp_seconds{name=\"CERES\"} 1767268800\n",
            "_run_messages{name=\"CERES\",severity=\"error\"} 1\n", "_query_error{name=\"half?\"} 0\n",
            "_machine_info{computer="})
        EXPECT_EQ(text.count(row), 1) << row << "\n" << text;
    EXPECT_EQ(text.count("\"Locked\""), 1) << "its number and nothing made up";
    EXPECT_TRUE(text.endsWith("\n# EOF\n"));
    for (const QString& line : QString::fromUtf8(text).split(u'\n').filter(u"# TYPE"_s))
        EXPECT_GT(
            fileContent(u"docs/quorilctl.md"_s).count("| `" + line.section(u' ', 2, 2).toUtf8() + "` |"), 0);
}

TEST_F(CtlTest, AsksBeforeItRemoves)
{
    const Console::Facts terminal{true, false, true, false};
    for (const char* answer : {"n\n", "\n", ""}) {
        const CtlRun kept = run({u"remove"_s, u"CERES"_s}, terminal, answer);
        EXPECT_EQ(kept.code, 1);
        EXPECT_TRUE(kept.errors.contains("CERES") && kept.errors.contains("really want to remove"));
        EXPECT_FALSE(m_machine.fakeServices.service(u"CERES"_s).deleted);
    }
    EXPECT_EQ(run({u"remove"_s, u"CERES"_s}, terminal, "y\n").code, 0);
    EXPECT_TRUE(m_machine.fakeServices.service(u"CERES"_s).deleted);
}

TEST_F(CtlTest, EscapesAndColoursForATerminalOnly)
{
    const Console::Facts terminal{false, true, true, true};
    const QStringList logs{u"logs"_s, u"CERES"_s};
    EXPECT_TRUE(run(logs).output.endsWith("00000321  disk\x1b[2J failed\n"));
    EXPECT_TRUE(run(logs, terminal).output.endsWith("00000321  disk\\u001b[2J failed\x1b[0m\n"));
    const CtlRun json = run(logs + QStringList(u"--json"_s), terminal);
    EXPECT_FALSE(json.output.contains('\x1b'));
    EXPECT_EQ(json.json()[1]["text"_L1].toString(), u"disk\x1b[2J failed");
    EXPECT_TRUE(run({u"list"_s}, terminal).output.contains("EMULATION TYPE"));
    EXPECT_EQ(run({u"list"_s, u"--names"_s}).output, "CERES\nIris\n");
}

TEST_F(CtlTest, NothingOfAMachineCommandsTheTerminal)
{
    const QString evil = u"evil\x1b]0;x\a\t\u009b2J\u202E\u2066\u061C"_s;
    m_machine.addInstance(evil).errors = {{u"start"_s, error::AccessDenied}};
    for (const QString& value : {u"DisplayName"_s, u"ImagePath"_s}) {
        const QString key = u"SYSTEM\\CurrentControlSet\\Services\\"_s + evil;
        ASSERT_TRUE(m_machine.fakeRegistry.key(key)->setText(value, evil));
        ASSERT_TRUE(m_machine.fakeRegistry.key(key + u"\\Parameters"_s)->setText(u"Home", evil));
    }
    EventEntry event;
    event.sourceName = event.computerName = evil;
    event.insertStrings.append(evil);
    m_machine.fakeEventLogs.logs[u"System"_s] = {event};
    // Windows has no such names of files.
    const QString name = HostNames ? evil : u"a"_s;
    const QString events = file(name, eventLog({event}));
    const QString log = file(name + u".log"_s, logLine(u":INFO :", u"00000249", evil));
    const QString lines[] = {u"list"_s, u"list --names"_s, u"show EVIL"_s, u"status"_s, u"start EVIL"_s,
        u"stop EVIL"_s, u"set-start-type EVIL auto"_s, u"logs EVIL --from EVIL"_s,
        u"logs EVIL --from 1971-01-01"_s, u"log LOG"_s, u"log --summary LOG"_s, u"events EVENTS"_s,
        u"events --summary EVENTS"_s, u"events LOG"_s, u"schedule start@+0=EVIL"_s, u"schedule EVIL"_s,
        u"report EVIL -o FILEEVIL"_s, u"metrics"_s, u"wait EVIL --for running --timeout 0"_s,
        u"remove --yes EVIL"_s, u"EVIL"_s, u"show noEVIL"_s, u"list --EVIL"_s, u"machine create LOG"_s,
        u"machine import EVIL"_s, u"machine export EVIL"_s};
    int shown = 0;
    for (QString line : lines) {
        line.replace(u"LOG"_s, log).replace(u"EVENTS"_s, events).replace(u"EVIL"_s, evil);
        for (const QString& options : {u""_s, u"--json "_s}) {
            const CtlRun done = run(words(options + line), {true, true, true, false});
            const QString text = QString::fromUtf8(done.output + done.errors);
            // A line of progress goes back to its beginning.
            EXPECT_EQ(terminalText(text), QString(text).replace(u'\n', u"\\n"_s).replace(u'\r', u"\\r"_s))
                << line;
            shown += text.contains(u"\\u001b]0;x\\u0007\\t\\u009b2J\\u202e\\u2066\\u061c"_s) ? 1 : 0;
        }
    }
    EXPECT_GE(shown, 30);
}

TEST_F(CtlTest, EverySubcommandIsInTheManualAndTheCompletion)
{
    const QByteArray manual = fileContent(u"docs/man/quorilctl.1"_s);
    const QByteArray completion = fileContent(u"packaging/completions/quorilctl"_s);
    EXPECT_GE(subcommands().size(), 16);
    for (const QString& subcommand : subcommands()) {
        EXPECT_TRUE(manual.contains(".B " + subcommand.toUtf8().replace("-", "\\-"))) << subcommand;
        EXPECT_TRUE(completion.contains(' ' + subcommand.toUtf8())) << subcommand;
        for (const QString& option : helpNames({subcommand}, u"^  (?:-.,)?(--[a-z-]+)"_s)) {
            EXPECT_TRUE(manual.contains(option.toUtf8().replace("-", "\\-"))) << option;
            EXPECT_TRUE(completion.contains(option.toUtf8())) << option;
        }
    }
}

} // namespace
} // namespace quoril::test
