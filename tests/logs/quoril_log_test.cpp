#include "logs/quoril_log.h"
#include "support/fake_machine.h"

#include <QBuffer>
#include <QFile>
#include <QTemporaryDir>

namespace quoril::test {
namespace {

using testing::ElementsAre;

QByteArray bytesOf(const QString& text)
{
    return QByteArray(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
}

QuorilLog read(QByteArray bytes, QuorilLog::Keep keep = QuorilLog::Keep::All)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QuorilLog log;
    log.read(buffer, keep);
    return log;
}

QuorilLog read(const QString& text, QuorilLog::Keep keep = QuorilLog::Keep::All)
{
    return read(bytesOf(text), keep);
}

QString header(
    const QString& code = u"00000249"_s, const QString& text = u"text"_s, const QString& tag = u":INFO :"_s)
{
    return u"20261122:221559"_s + tag + u"  "_s + code + u"                    "_s + text + u"\r\n"_s;
}

QStringList linesOf(const QuorilLogMessage& message)
{
    QStringList lines;
    for (qsizetype i = 0; i < message.GetLineCount(); ++i)
        lines.append(message.GetLine(i));
    return lines;
}

TEST(QuorilLog, ReadsColumnsOfHeaders)
{
    const QuorilLog log = read(header(u"0000024A"_s, u"first"_s, u":WARN :"_s) + u"second\r\n\r\nthird"_s
        + u" 13 1-2: 7xx+9:ERROR:??ZZ\u010A\r\n"_s);
    ASSERT_EQ(log.GetCount(), 1);
    const QuorilLogMessage message = log.GetMessage(0);
    EXPECT_EQ(message.m_level, 2);
    EXPECT_THAT(message.dt_tm, ElementsAre(2026, 11, 22, 22, 15, 59));
    EXPECT_EQ(message.m_code_text, u"0000024A"_s);
    EXPECT_EQ(message.m_code, 0x24Au);
    EXPECT_EQ(linesOf(message),
        QStringList({u"first"_s, u"second"_s, QString(), u"third 13 1-2: 7xx+9:ERROR:??ZZ\u010A"_s}));

    const QuorilLogMessage odd = read(u" 13 1-2: 7xx -9:ERROR:??0ZZ\u0141\r\n"_s).GetMessage(0);
    EXPECT_THAT(odd.dt_tm, ElementsAre(13, 1, 2, 7, 0, -9));
    EXPECT_EQ(odd.m_code_text, u"0ZZ?  "_s);
    EXPECT_EQ(odd.m_code, 0u);
    EXPECT_EQ(linesOf(odd), QStringList({QString()}));
}

TEST(QuorilLog, TakesALineForAHeaderByItsFirstTag)
{
    const struct
    {
        QString line;
        qint32 level; // 0 for no header
    } cases[] = {
        {u"0123456789abcde:INFO :"_s, 1},
        {u"0123456789abcde:ERROR:"_s, 3},
        {u"0123456789abcd:INFO :"_s, 0},
        {u"\uFEFF0123456789abcde:INFO :"_s, 0},
        {u"0123456789abcde:INFO:"_s, 0},
        {u"012345678:INFO :INFO :"_s, 0},
        {u":INFO :89abcdef:INFO :"_s, 0},
        {u":WARN :789abcde:INFO :"_s, 1},
        {u"01234\u00007789abcde:INFO :"_s, 0},
        {u"0123456789abcde:info :"_s, 0},
    };
    for (const auto& each : cases) {
        const QuorilLog log = read(each.line);
        EXPECT_EQ(log.GetCount(), each.level == 0 ? 0 : 1) << each.line;
        if (log.GetCount() == 1) {
            EXPECT_EQ(log.GetMessage(0).m_level, each.level) << each.line;
        }
    }
}

// At each place around the border of the blocks that are searched from the end.
TEST(QuorilLog, FindsAStartMarkAtEveryPlaceOfABlock)
{
    constexpr qsizetype Block = 128 * 1024;
    const QString mark = header(u"00000249"_s, u"here"_s);
    const QString before = header() + (QString(98, u'b') + u"\r\n"_s).repeated(1400);
    for (qsizetype rest = Block - mark.size() - 3; rest < Block + 4; ++rest) {
        const QString tail = (QString(98, u't') + u"\r\n"_s).repeated(rest / 100) + QString(rest % 100, u'e');
        const QuorilLog run = read(before + mark + tail, QuorilLog::Keep::FromLastStart);
        ASSERT_EQ(run.GetCount(), 1) << rest;
        ASSERT_EQ(run.lineText(0), u"here"_s) << rest;
        ASSERT_EQ(run.lineCount(), 1 + (rest + 99) / 100) << rest;
    }
}

/// A log that somebody else works on whenever a piece of it was read.
class BusyFile : public QFile
{
public:
    BusyFile(const QString& name, std::function<void()> work) : QFile(name), m_work(std::move(work)) { }

protected:
    qint64 readData(char* data, qint64 size) override
    {
        const qint64 got = QFile::readData(data, std::min<qint64>(size, 1 << 20));
        m_work();
        return got;
    }

private:
    std::function<void()> m_work;
};

TEST(QuorilLog, IsReadToAnEndWhileItIsCutRotatedRewrittenAndWritten)
{
    const QTemporaryDir folder;
    const QString name = folder.filePath(u"a.log"_s);
    const QString oldLine = QString(40, u'o');
    const QString newLine = QString(90, u'n');
    constexpr int Lines = 60'000;
    const auto write = [&](const QString& text, QIODevice::OpenMode mode) {
        QFile file(name);
        ASSERT_TRUE(file.open(mode) && file.write(bytesOf(text)) == 2 * text.size());
    };
    const QString rewritten = header() + (newLine + u"\r\n"_s).repeated(Lines);
    const struct
    {
        std::function<void()> work;
        qsizetype least, most; ///< old lines
    } cases[] = {
        {[&] { EXPECT_TRUE(QFile::resize(name, 0)); }, 10'000, Lines / 2},
        {[&] { EXPECT_TRUE(QFile::resize(name, 3'000'001)); }, 30'000, 40'000},
        {[&] {
             // A file that is open can't be moved on Windows.
             if (QFile::rename(name, name + u".1"_s))
                 write(header(), QIODevice::WriteOnly);
         },
            Lines, Lines},
        {[&] { write(rewritten, QIODevice::WriteOnly); }, 10'000, Lines / 2},
        // As fast as it is read.
        {[&] { write((newLine + u"\r\n"_s).repeated(6'000), QIODevice::Append); }, Lines, Lines},
    };
    for (const auto& [work, least, most] : cases) {
        QFile::remove(name + u".1"_s);
        write(header() + (oldLine + u"\r\n"_s).repeated(Lines), QIODevice::WriteOnly);
        BusyFile file(name, work);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Unbuffered));
        QuorilLog log;
        log.read(file, QuorilLog::Keep::All);
        qsizetype old = 0, cut = 0;
        for (qsizetype i = 1; i < log.lineCount(); ++i) {
            const QString line = log.lineText(i);
            old += line == oldLine ? 1 : 0;
            cut += line != oldLine && line != newLine ? 1 : 0;
        }
        EXPECT_GE(old, least);
        EXPECT_LE(old, most);
        EXPECT_LE(cut, 2); // the one in which it happened, and the last
        EXPECT_LE(log.lineCount(), Lines + 1);
    }
}

TEST(QuorilLog, LoadReportsHowItWent)
{
    FakeMachine fake;
    fake.fakeFiles.put(u"C:\\a.log", bytesOf(header()));
    QuorilLog log;
    EXPECT_EQ(log.Load(u"C:\\a.log"), 0);
    EXPECT_EQ(log.Load({}), 1);
    EXPECT_EQ(log.Load(u"C:\\b.log"), 2);
    EXPECT_EQ(log.GetCount(), 1);
    EXPECT_EQ(fake.calls.open(), 0);
    fake.fakeFiles.put(u"C:\\8.log", header().toLatin1());
    EXPECT_EQ(log.Load(u"C:\\8.log"), 0);
    EXPECT_EQ(log.GetCount(), 0);
}

} // namespace
} // namespace quoril::test
