#include "ctl_fixture.h"
#include "logs/log_table.h"
#include "logs/quoril_log.h"
#include "support/time_zone.h"

#include <QDateTime>

#include <csignal>

namespace quoril::test {
namespace {

TEST_F(CtlTest, TheLastRunIsThePeriodOfItsEvents)
{
    useTimeZone("UTC");
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

TEST_F(CtlTest, ShowsTheChosenRowsOfTheChosenRun)
{
    m_machine.fakeFiles.put(u"C:\\ceres.log",
        units(u"x\n"_s) + logLine(u":INFO :", u"250", u"torn") + Log
            + logLine(u":WARN :", u"322", u"tape slow") + logLine(u":INFO :", u"00000249", u"Start")
            + logLine(u":WARN :", u"322", u"Tape slow"));
    const std::pair<const char*, const char*> cases[] = {
        {"", "Start;Tape slow"},
        {"--run 0 -n 1", "Tape slow"},
        {"--run -1", "Start;disk\x1b[2J failed;tape slow"},
        {"--run=-2", "torn"},
        {"--run 1", "torn"},
        {"--run 3 -n 0", ""},
        {"--run all -n 5", "Start;disk\x1b[2J failed;tape slow;Start;Tape slow"},
        {"--run all -p warning", "disk\x1b[2J failed;tape slow;Tape slow"},
        {"--run all -p ERROR --from 2026-01-02", "disk\x1b[2J failed"},
        {"--run all --grep ^t[ao]", "torn;tape slow;Tape slow"},
        {"--run all --grep Ta -p warning -n 4", "Tape slow"},
    };
    for (const auto& [options, texts] : cases) {
        const CtlRun done
            = run(u"logs CERES %1"_s.arg(QString::fromLatin1(options)).split(u' ', Qt::SkipEmptyParts));
        QStringList shown;
        for (const QString& line : QString::fromUtf8(done.output).split(u'\n', Qt::SkipEmptyParts))
            shown.append(line.mid(31));
        EXPECT_EQ(shown.join(u';'), QString::fromUtf8(texts)) << options << done.errors;
    }
    EXPECT_EQ(run({u"logs"_s, u"CERES"_s, u"--list-runs"_s}).output,
        "-2  1  2026-01-01 12:00:00  2026-01-01 12:00:00  1  0  0\n"
        "-1  2  2026-01-01 12:00:00  2026-01-01 12:00:00  3  1  1\n"
        "0   3  2026-01-01 12:00:00  2026-01-01 12:00:00  2  1  0\n");
    EXPECT_TRUE(run({u"logs"_s, u"CERES"_s, u"Iris"_s, u"-n1"_s}).output.contains("\nIris  20"));
}

TEST_F(CtlTest, FollowsALogThatGrowsIsCutRemovedAndMadeAnew)
{
    const auto line = [](const char* text) { return logLine(u":INFO :", u"321", QString::fromLatin1(text)); };
    const auto put = [this](const QByteArray& log) { m_machine.fakeFiles.put(u"C:\\ceres.log", log); };
    const QByteArray start = logLine(u":INFO :", u"00000249", u"Start");
    put(line("old") + start + line("a"));
    QByteArray log = line("old") + start + line("a");
    const std::function<void()> steps[] = {
        [&] { put(log += line("b") + line("c").left(70)); },
        [&] { put(log += line("c").sliced(70) + start); },
        [&] {
            const qint64 now = m_machine.fakeClock.now();
            m_machine.fakeEventLogs.logs[u"System"_s] = {eventOf(quint32(now), u"Disk"_s, {u"event"_s})};
        },
        [&] { put(log = line("cut")); },
        [&] { EXPECT_TRUE(m_machine.fakeFiles.remove(u"C:\\ceres.log").ok()); },
        [&] { put(log = line("new") + line("longer than what was cut") + line("unended").chopped(4)); },
        [] {},
        [] { std::raise(SIGINT); },
    };
    std::size_t sleeps = 0;
    m_machine.fakeClock.onSleep = [&] {
        if (sleeps % 5 == 0)
            steps[sleeps / 5]();
        ++sleeps;
    };
    const CtlRun done = run({u"logs"_s, u"-f"_s, u"-n2"_s, u"--json"_s, u"CERES"_s});
    EXPECT_EQ(done.code, 130) << done.errors;
    QStringList texts;
    for (const QByteArray& row : done.output.split('\n'))
        texts.append(QJsonDocument::fromJson(row)["text"_L1].toString());
    EXPECT_EQ(texts.join(QChar(u' ')).trimmed(),
        u"Start a b c Start event cut new longer than what was cut unended");
}

// What streams past is what the table of the panel would show.
TEST_F(CtlTest, PrintsOddLinesOfALogAsTheyStandInTheTable)
{
    QByteArray content = units(u"before\n"_s);
    for (const QString& text : {u"plain"_s, u"qu\"o\\te\t\u0001"_s, u"B\u00fccher \u6f22 \U0001F600"_s,
             u"lone \xD800."_s, u"cut\rhere"_s, QString(600, u'x'), u"zero\0 hidden"_s, QString()}) {
        for (const QString& code : {u"00000321"_s, u"3\u01412"_s, u"\"249"_s})
            content += logLine(u":WARN :", code, text) + units(text + u"\r\n"_s);
    }
    content += logLine(u":ERROR:", u"1", {}).replace(0, 8, units(u"x-1 "_s)).left(50);
    QuorilLog log;
    QBuffer device(&content);
    device.open(QIODevice::ReadOnly);
    log.read(device);
    LogTableBuilder table;
    table.AddMessageRows(std::make_shared<QuorilLog>(std::move(log)), 0);
    const PanelTable rows = table.take();
    const QString name = file(u"odd.log"_s, content);
    const QByteArray text = run({u"log"_s, name}).output;
    const QJsonArray json = run({u"log"_s, u"--json"_s, name}).json().array();
    ASSERT_EQ(json.size(), rows.rowCount());
    QByteArray expected;
    for (qsizetype row = 0; row < rows.rowCount(); ++row) {
        const QString code = rows.text(row, 1);
        const QJsonObject object = json[row].toObject();
        expected
            += (rows.text(row, 0) + u"  "_s + code.leftJustified(8) + u"  "_s + rows.text(row, 2) + u'\n')
                   .toUtf8();
        EXPECT_EQ(object["date"_L1].toString(), rows.text(row, 0));
        EXPECT_EQ(object["messageId"_L1].toString(), code);
        EXPECT_EQ(object["text"_L1].toString().toUtf8(), rows.text(row, 2).toUtf8());
    }
    EXPECT_EQ(text, expected);
}

} // namespace
} // namespace quoril::test
