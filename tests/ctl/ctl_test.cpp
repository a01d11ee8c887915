#include "ctl/ctl.h"

#include "ctl_run.h"
#include "formats/evt_appender.h"
#include "platform/terminal_text.h"
#include "support/event_log_samples.h"
#include "support/fake_machine.h"
#include "support/utf16.h"

#include <QBuffer>
#include <QDateTime>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

namespace quoril::test {
namespace {

QByteArray fileContent(const QString& below)
{
    QFile file(QStringLiteral(QUORIL_SOURCE_DIR "/") + below);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(below);
    return file.readAll();
}

/// The fields and their types that the documentation lists for a subcommand.
QMap<QString, QString> documentedFields(const QString& subcommand)
{
    QMap<QString, QString> fields;
    bool here = false;
    for (const QString& line : QString::fromUtf8(fileContent(u"docs/quorilctl.md"_s)).split(u'\n')) {
        if (line.startsWith(u"### "_s))
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

/// A line of the emulator's log, in its columns, as it lies in the file.
QByteArray logLine(QStringView tag, QStringView code, QStringView text)
{
    return units(u"20260101 120000"_s + tag.toString().leftJustified(9) + code.toString().leftJustified(28)
        + text.toString() + u"\r\n"_s);
}

QByteArray eventLog(const std::vector<EventEntry>& entries)
{
    QByteArray bytes;
    QBuffer device(&bytes);
    device.open(QIODevice::ReadWrite);
    auto appender = EvtAppender::open(device);
    for (const EventEntry& entry : entries)
        EXPECT_TRUE(appender->append(entry).ok());
    EXPECT_TRUE(appender->finish().ok());
    return bytes;
}

#ifdef Q_OS_WIN
constexpr bool HostNames = false;
#else
constexpr bool HostNames = true; ///< a file may have any name
#endif

class CtlTest : public testing::Test
{
protected:
    CtlTest()
    {
        m_machine.addInstance(u"CERES"_s, {u"Licence"_s});
        m_machine.addInstance(u"Iris"_s);
        m_machine.fakeServices.service(u"Licence"_s);
        m_machine.fakeSystemInfo.texts.insert(error::ServiceDoesNotExist, u"No such service."_s);
        m_machine.fakeRegistry.load(
            u"[SYSTEM\\CurrentControlSet\\Services\\CERES\\Parameters\\session\\log\\0]\n"
            u"Value=C:\\ceres.log\n");
        m_machine.fakeFiles.put(u"C:\\ceres.log", Log);
    }

    CtlRun run(const QStringList& arguments, Console::Facts facts = {}, const QByteArray& typed = {})
    {
        return runCtlOn(&m_machine, arguments, facts, typed);
    }
    QString file(const QString& name, const QByteArray& content)
    {
        QFile file(m_folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        return file.fileName();
    }

    static inline const QByteArray Log = logLine(u":INFO :", u"00000249", u"Start")
        + logLine(u":ERROR:", u"00000321", u"disk\x1b[2J failed");
    FakeMachine m_machine;
    QTemporaryDir m_folder;
};

TEST_F(CtlTest, JsonHasTheDocumentedFields)
{
    const EventEntry event = eventOf(0, u"QUORIL"_s, {u"one"_s});
    const QString events = file(u"a.evt"_s, eventLog({event, event}));
    const QString log = file(u"a.log"_s, Log);
    const std::pair<QString, QStringList> cases[] = {
        {u"list"_s, {u"list"_s}},
        {u"show"_s, {u"show"_s, u"CERES"_s}},
        {u"status"_s, {u"status"_s}},
        {u"status"_s, {u"status"_s, u"CERES"_s}},
        {u"start"_s, {u"start"_s, u"CERES"_s}},
        {u"stop"_s, {u"stop"_s, u"CERES"_s}},
        {u"set-start-type"_s, {u"set-start-type"_s, u"Iris"_s, u"Automatic"_s}},
        {u"logs"_s, {u"logs"_s, u"CERES"_s}},
        {u"log"_s, {u"log"_s, log}},
        {u"log --summary"_s, {u"log"_s, u"--summary"_s, log}},
        {u"events"_s, {u"events"_s, events}},
        {u"events --summary"_s, {u"events"_s, u"--summary"_s, events}},
        {u"schedule"_s, {u"schedule"_s, u"start@+0=Iris"_s, u"stop@+0=iris"_s}},
        {u"report"_s, {u"report"_s, u"CERES"_s, u"--output"_s, m_folder.filePath(u"report"_s)}},
        {u"remove"_s, {u"remove"_s, u"--yes"_s, u"Iris"_s}},
    };
    for (const auto& [documented, arguments] : cases) {
        const CtlRun done = run(QStringList(u"--json"_s) + arguments);
        EXPECT_EQ(done.code, 0) << done.errors.toStdString();
        const QJsonDocument json = done.json();
        const QJsonArray objects = json.isArray() ? json.array() : QJsonArray{json.object()};
        ASSERT_FALSE(objects.isEmpty()) << done.output.toStdString();
        const auto fields = documentedFields(documented);
        ASSERT_FALSE(fields.isEmpty()) << qPrintable(documented);
        for (const QJsonValue& object : objects)
            EXPECT_EQ(fieldsOf(object.toObject()), fields) << qPrintable(documented);
    }
    EXPECT_EQ(run({u"events"_s, u"--summary"_s, u"--json"_s, events}).json()["records"_L1].toInt(), 2);
}

TEST_F(CtlTest, TellsWhatIsWrongAndEndsWithItsCode)
{
    m_machine.addInstance(u"Locked"_s).errors = {{u"start"_s, error::AccessDenied}};
    const QByteArray noFile = "none: " + qt_error_string(ENOENT).toUtf8();
    struct Case
    {
        QStringList arguments;
        int code;
        QByteArray told;
    };
    const Case cases[] = {
        {{}, 2, "subcommand is required"},
        {{u"nope"_s}, 2, "\"nope\" is no subcommand"},
        {{u"list"_s, u"--bogus"_s}, 2, "--bogus"},
        {{u"start"_s}, 2, "required"},
        {{u"list"_s, u"--machine"_s, u""_s}, 2, "--machine: it is empty"},
        {{u"start"_s, u"CERES"_s, u"--timeout"_s, u"0"_s}, 2, "--timeout"},
        {{u"start"_s, u"CERES"_s, u"--no-wait"_s, u"--timeout"_s, u"3"_s}, 2, "excludes"},
        {{u"set-start-type"_s, u"CERES"_s, u"boot"_s}, 2, "boot"},
        {{u"logs"_s, u"CERES"_s, u"--from"_s, u"yesterday"_s}, 2, "\"yesterday\" is no time"},
        {{u"schedule"_s, u"start@+0=CERES"_s, u"CERES"_s}, 2, "\"CERES\" is no order"},
        {{u"remove"_s, u"CERES"_s}, 2, "--yes"},
        {{u"status"_s, u"Nemo"_s}, 1,
            "SERVICE-MANAGER: Failed to connect to service Nemo Reason: No such service. (0x424)"},
        {{u"start"_s, u"Iris"_s, u"Nemo"_s}, 1, "No such service. (0x424)"},
        {{u"schedule"_s, u"start@+0=Nemo"_s}, 1, "No such service. (0x424)"},
        {{u"remove"_s, u"--yes"_s, u"Nemo"_s}, 1, "The service is not installed yet."},
        {{u"start"_s, u"Locked"_s}, 1,
            "Failed to start the service \"Locked\" Reason: Access is denied. (0x5)"},
        {{u"log"_s, m_folder.filePath(u"none"_s)}, 1, noFile},
        {{u"events"_s, file(u"text"_s, "text")}, 1, "text: no event log"},
    };
    for (const Case& each : cases) {
        const CtlRun done = run(each.arguments);
        EXPECT_EQ(done.code, each.code) << qPrintable(each.arguments.join(u' '));
        EXPECT_TRUE(done.errors.contains(each.told)) << each.told.toStdString() << "\n"
                                                     << done.errors.toStdString();
    }
    EXPECT_TRUE(m_machine.calls.takeLog().filter(u"start Iris"_s).isEmpty()) << "nothing is half done";
    // One that can't be asked is told of, and the others stand.
    m_machine.fakeServices.service(u"Locked"_s).errors = {{u"queryStatus"_s, error::AccessDenied}};
    const CtlRun all = run({u"status"_s});
    EXPECT_EQ(all.code, 1);
    EXPECT_EQ(all.output.simplified(), "CERES stopped manual Iris stopped manual Locked unknown unknown");
    EXPECT_TRUE(all.errors.contains("Locked") && all.errors.contains("(0x5)")) << all.errors.toStdString();
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
    EXPECT_TRUE(late.errors.contains("0x41D")) << late.errors.toStdString();
    EXPECT_EQ(m_machine.fakeClock.now() - before, 7);
    ceres.afterStop = {service_state::Running, service_state::StopPending, service_state::Stopped};
    EXPECT_EQ(run({u"stop"_s, u"CERES"_s}).code, 0);
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
    const QStringList cases[]
        = {{u"list"_s}, {u"list"_s, u"--names"_s}, {u"show"_s, evil}, {u"status"_s}, {u"start"_s, evil},
            {u"stop"_s, evil}, {u"set-start-type"_s, evil, u"auto"_s}, {u"logs"_s, evil, u"--from"_s, evil},
            {u"logs"_s, evil, u"--from"_s, u"1971-01-01"_s}, {u"log"_s, log}, {u"log"_s, u"--summary"_s, log},
            {u"events"_s, events}, {u"events"_s, u"--summary"_s, events}, {u"events"_s, log},
            {u"schedule"_s, u"start@+0="_s + evil}, {u"schedule"_s, evil},
            {u"report"_s, evil, u"-o"_s, m_folder.filePath(evil)}, {u"remove"_s, u"--yes"_s, evil}, {evil},
            {u"show"_s, u"no"_s + evil}, {u"list"_s, u"--"_s + evil}, {u"machine"_s, u"create"_s, log},
            {u"machine"_s, u"import"_s, evil}, {u"machine"_s, u"export"_s, evil}};
    int shown = 0;
    for (const QStringList& arguments : cases) {
        for (const QStringList& options : {QStringList(), QStringList(u"--json"_s)}) {
            const CtlRun done = run(options + arguments, {true, true, true, false});
            const QString text = QString::fromUtf8(done.output + done.errors);
            // A line of progress goes back to its beginning.
            EXPECT_EQ(terminalText(text), QString(text).replace(u'\n', u"\\n"_s).replace(u'\r', u"\\r"_s))
                << qPrintable(arguments.join(u' '));
            shown += text.contains(u"\\u001b]0;x\\u0007\\t\\u009b2J\\u202e\\u2066\\u061c"_s) ? 1 : 0;
        }
    }
    EXPECT_GE(shown, 30);
}

TEST_F(CtlTest, TheLastRunIsThePeriodOfItsEvents)
{
    qputenv("TZ", "UTC");
    const auto at = [](const char* time) {
        const QString text = QString::fromLatin1(time);
        return eventOf(
            quint32(QDateTime::fromString(text, Qt::ISODate).toSecsSinceEpoch()), u"QUORIL"_s, {text});
    };
    m_machine.fakeEventLogs.logs[u"System"_s]
        = {at("2026-01-01T11:59:59"), at("2026-01-01T12:00:10"), at("2026-01-01T18:00:00")};
    const auto events = [this](const QStringList& period) {
        const QByteArray output = run(QStringList{u"logs"_s, u"CERES"_s} + period).output;
        return std::pair(int(output.count("System Log")), int(output.count("2026-01-01T")));
    };
    EXPECT_EQ(events({}), std::pair(2, 1));
    EXPECT_EQ(events({u"--last-run"_s}), std::pair(2, 1));
    EXPECT_EQ(
        events({u"--from"_s, u"2026-01-01 12:00"_s, u"--to"_s, u"2026-01-01T18:00:00"_s}), std::pair(2, 2));
    EXPECT_EQ(events({u"--from"_s, u"2026-01-02"_s, u"--to"_s, u"2026-01-03"_s}), std::pair(0, 0));
}

TEST_F(CtlTest, EverySubcommandIsInTheManualAndTheCompletion)
{
    const QByteArray manual = fileContent(u"docs/man/quorilctl.1"_s);
    const QByteArray completion = fileContent(u"packaging/completions/quorilctl"_s);
    const auto names = [this](const QStringList& of, const QString& pattern) {
        QStringList found;
        auto match = QRegularExpression(pattern, QRegularExpression::MultilineOption)
                         .globalMatch(QString::fromUtf8(run(of + QStringList(u"--help"_s)).output));
        while (match.hasNext())
            found.append(match.next().captured(1));
        return found;
    };
    const QStringList subcommands = names({}, u"^  ([a-z][a-z-]+) "_s);
    EXPECT_GE(subcommands.size(), 12);
    for (const QString& subcommand : subcommands) {
        EXPECT_TRUE(manual.contains(".B " + subcommand.toUtf8().replace("-", "\\-")))
            << qPrintable(subcommand);
        EXPECT_TRUE(completion.contains(' ' + subcommand.toUtf8())) << qPrintable(subcommand);
        for (const QString& option : names({subcommand}, u"^  (?:-.,)?(--[a-z-]+)"_s)) {
            EXPECT_TRUE(manual.contains(option.toUtf8().replace("-", "\\-"))) << qPrintable(option);
            EXPECT_TRUE(completion.contains(option.toUtf8())) << qPrintable(option);
        }
    }
}

} // namespace
} // namespace quoril::test
