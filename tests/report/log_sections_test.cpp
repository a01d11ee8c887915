#include "report/log_sections.h"

#include "report/report_text.h"
#include "support/fake_machine.h"

#include <QBuffer>

namespace quoril::test {
namespace {

TEST(LogSections, FindTheLogsNameInAConfiguration)
{
    const QString longLine = QString(300'000, u'#') + u'\n';
    const std::pair<QString, QString> cases[] = {
        {u"set a\n\r\n set session log=\"no\"\nset session log \t= \t\"D:\\x y\\b\" c\n"_s, u"D:\\x y\\b"_s},
        {u"set session log=\"first\"\nset session log=\"second\""_s, u"first"_s},
        {u"set session log = \"open line\r\n\"next"_s, u"open line"_s},
        {u"set session log = plain\nset session log = \"late\"\n"_s, {}},
        {u"set session logs = \"x\"\nSet session log = \"x\"\n"_s, {}},
        {longLine + u"set session log=\""_s + QString(20'000, u'n'), QString(20'000, u'n')},
    };
    for (const auto& [text, name] : cases) {
        QByteArray bytes = units(text);
        QBuffer file(&bytes);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_EQ(findLogName(file), name) << text.left(60);
    }
}

TEST(LogSections, ResolveTheLogsNameAgainstTheConfiguration)
{
    EXPECT_EQ(resolveLogName(u"a.log"_s, u"D:\\conf/sub/c.cfg"_s), u"D:\\conf/sub/a.log"_s);
    EXPECT_EQ(resolveLogName(u"\\logs/a.log"_s, u"D:\\conf\\c.cfg"_s), u"D:\\logs/a.log"_s);
    EXPECT_EQ(resolveLogName(u"E:a.log"_s, u"D:\\conf\\c.cfg"_s), u"E:a.log"_s);
    EXPECT_EQ(resolveLogName(u"a.log"_s, {}), u"a.log"_s);
}

TEST(LogSections, WriteWhatTheEmulatorWrote)
{
    FakeMachine machine;
    const QString text
        = u"20261122 no tag\n"_s + QString(200'000, u'\x416') + u"\r\n"_s + QChar(0) + u"end"_s;
    machine.fakeFiles.put(u"C:\\a.log", units(text) + 'x');
    CollectedText out;
    writeEmulatorLog(out, u"C:\\a.log"_s);
    EXPECT_EQ(out.text,
        u"-------------------- LOG --------------------\r\n"_s + text
            + u"-------------------- End of the LOG --------------------\r\n"_s);
    EXPECT_EQ(machine.calls.open(), 0);

    machine.fakeFiles.readsFailAt = 8;
    out.text.clear();
    writeEmulatorLog(out, u"C:\\a.log"_s);
    EXPECT_EQ(out.text,
        u"-------------------- LOG --------------------\r\n2026Can't open QUORIL log file: \"C:\\a.log\"\r\n"
        "-------------------- End of the LOG --------------------\r\n"_s);
}

} // namespace
} // namespace quoril::test
