#include "logs/quoril_log.h"
#include "support/fake_machine.h"

#include <QBuffer>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace quoril {
namespace {

using namespace Qt::StringLiterals;
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
        EXPECT_EQ(log.GetCount(), each.level == 0 ? 0 : 1) << each.line.toStdString();
        if (log.GetCount() == 1) {
            EXPECT_EQ(log.GetMessage(0).m_level, each.level) << each.line.toStdString();
        }
    }
}

TEST(QuorilLog, CutsLinesByUnits)
{
    const QString longText = QString(600, u'x');
    const QString full = header(u"00000249"_s, QString(1023 - 52, u'y')).chopped(2);
    const QuorilLog log = read(header() + longText + u"\r\n"_s + full + u"rest\r\n"_s + QString(1022, u'z')
        + u"\r\n"_s + u"cut\rhere\n"_s + u"lone \xD800"_s);
    ASSERT_EQ(log.GetCount(), 2);
    EXPECT_EQ(linesOf(log.GetMessage(0)), QStringList({u"text"_s, longText.left(512)}));
    EXPECT_EQ(linesOf(log.GetMessage(1)),
        QStringList({QString(512, u'y'), u"rest"_s, QString(512, u'z'), QString(), u"cut"_s,
            u"lone "_s + QChar(0xD800)}));
}

TEST(QuorilLog, EndsLinesAtUnitsAndNotAtTheBytesOfOthers)
{
    // Each holds the bytes of a line feed, or makes them together with its neighbour.
    const QString near = u"\u0A0D\u0D0A\u0A0A\u0D0D\u0A00\u000B\u0A00x\u100A\u0A10"_s;
    for (const QString& gap : {QString(), u"y"_s}) {
        const QuorilLog log = read(header() + gap + near + u"\r\n\n"_s + near.repeated(40) + u"\n"_s);
        EXPECT_EQ(linesOf(log.GetMessage(0)), QStringList({u"text"_s, gap + near, {}, near.repeated(40)}));
    }
}

TEST(QuorilLog, SurvivesAFileCutAnywhere)
{
    const QByteArray whole = bytesOf(header(u"00000249"_s, u"te\u0416t"_s));
    for (qsizetype size = 0; size <= whole.size(); ++size) {
        const QuorilLog log = read(whole.left(size));
        ASSERT_EQ(log.GetCount(), size / 2 >= 22 ? 1 : 0) << size;
        if (log.GetCount() == 0)
            continue;
        const QuorilLogMessage message = log.GetMessage(0);
        EXPECT_EQ(message.m_code_text, u"00000249"_s.left(size / 2 - 24 < 0 ? 0 : size / 2 - 24)) << size;
        EXPECT_EQ(
            linesOf(message), QStringList({u"te\u0416t"_s.left(std::max<qsizetype>(0, size / 2 - 52))}));
    }
}

TEST(QuorilLog, FindsTheLastStartMark)
{
    QString text = u"dropped\r\n"_s;
    for (int i = 0; i < 20; ++i)
        text += header(i == 3 || i == 17 ? u"249 "_s + u"    "_s : u"00000250"_s, QString::number(i))
            + u"more\r\n"_s;
    const QuorilLog all = read(text);
    EXPECT_EQ(all.m_last_message, 17);
    EXPECT_EQ(all.GetCount(), 20);

    const QuorilLog run = read(text, QuorilLog::Keep::FromLastStart);
    EXPECT_EQ(run.m_last_message, 0);
    ASSERT_EQ(run.GetCount(), 3);
    for (qsizetype i = 0; i < 3; ++i)
        EXPECT_EQ(linesOf(run.GetMessage(i)), linesOf(all.GetMessage(17 + i)));
}

// More text than all the blocks that are parsed at once, with and without units above 0xFF, and messages that
// go on over many blocks.
TEST(QuorilLog, NumbersLinesAcrossBlocks)
{
    QString text = u"dropped\r\n"_s.repeated(100'000) + header();
    QStringList lines{u"text"_s};
    qsizetype messages = 1;
    for (int i = 0; i < 200'000; ++i) {
        const bool wide = i / 45'000 % 2 == 1;
        const QString line = QString::number(i) + (wide ? u" \u0416"_s : u" ab"_s);
        const bool begins = i % 100'000 == 99'999;
        text += begins ? header(u"00000250"_s, line) : line + u"\r\n"_s;
        messages += begins;
        lines.append(line);
    }
    const QuorilLog log = read(text);
    ASSERT_EQ(log.GetCount(), messages);
    ASSERT_EQ(log.lineCount(), lines.size());
    for (qsizetype i = 0; i < lines.size(); ++i) {
        ASSERT_EQ(log.lineText(i), lines[i]);
        ASSERT_EQ(log.messageOf(i), i / 100'000);
    }
    EXPECT_EQ(log.firstLineOf(messages), lines.size());

    // Start marks in later blocks drop the blocks before them.
    const QuorilLog run = read(text + text.right(20) + text, QuorilLog::Keep::FromLastStart);
    EXPECT_EQ(run.GetCount(), messages);
    EXPECT_EQ(run.lineCount(), lines.size());
    EXPECT_EQ(run.lineText(lines.size() - 1), lines.last());
}

TEST(QuorilLog, CutsALineLongerThanABlock)
{
    constexpr qsizetype Pieces = 1500;
    const QuorilLog log
        = read(header() + QString(1023 * Pieces, u'x') + header(u"00000250"_s, u"piece"_s) + u"end"_s);
    ASSERT_EQ(log.GetCount(), 2);
    EXPECT_EQ(log.firstLineOf(1), 1 + Pieces);
    EXPECT_EQ(log.lineText(Pieces), QString(512, u'x'));
    EXPECT_EQ(log.lineText(Pieces + 1), u"piece"_s);
    EXPECT_EQ(log.lineText(Pieces + 2), u"end"_s);
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

TEST(QuorilLog, LoadTellsHowItWent)
{
    test::FakeMachine fake;
    const ScopedMachine inForce(fake);
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
} // namespace quoril
