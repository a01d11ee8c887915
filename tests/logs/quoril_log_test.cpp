#include "logs/log_runs.h"
#include "logs/quoril_log.h"
#include "support/fake_machine.h"
#include "support/plain_log_reader.h"

#include <QBuffer>
#include <QFile>
#include <QRandomGenerator>
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

/// What a log may hold, marks and oddities among it.
QString somePiece(QRandomGenerator& random)
{
    constexpr QStringView Tags[] = {u":INFO :", u":WARN :", u":ERROR:", u":INFO:", u"\u0000INFO :"};
    constexpr QStringView Codes[]
        = {u"00000250", u"0024900A", u"0249\u0000249", u"2490249 ", u"249\u01415678"};
    // Each holds the bytes of a line feed, or makes them together with its neighbour.
    constexpr QStringView Near = u"\u0A0D\u0D0A\u0A0A\u0D0D\u0A00\u000B\u0A00x\u100A\u0A10\u0416";
    const auto any = [&random](const auto& of) { return of[random.bounded(int(std::size(of)))].toString(); };
    switch (random.bounded(12)) {
    case 0:
        return header(u"00000249"_s);
    case 1:
        return header(any(Codes), u"odd"_s, any(Tags));
    case 2:
        return Near.left(random.bounded(12)).toString();
    case 3:
        return QString(1000 + random.bounded(30), QChar(random.bounded(2) * u'x')) + header();
    case 4:
        return QString(random.bounded(30), u':') + header();
    case 5:
        return header(any(Codes)).left(random.bounded(80));
    case 6:
        return header().replace(random.bounded(40), 1, QChar(random.bounded(2) * u':'));
    default:
        return header(u"00000321"_s, QString(random.bounded(200), u'y'), any(Tags)) + u"more\r\n"_s;
    }
}

/// Compares all that is read of a log with the plainest reading of it.
void expectAsPlain(const QByteArray& bytes, const std::string& what)
{
    const test::PlainLog plain(bytes);
    const auto last = plain.starts.empty() ? 0 : plain.starts.back();
    const QuorilLog all = read(bytes);
    ASSERT_EQ(test::PlainLog::messagesOf(all), plain.from(0)) << what;
    EXPECT_EQ(all.m_last_message, last) << what;
    const QuorilLog run = read(bytes, QuorilLog::Keep::FromLastStart);
    ASSERT_EQ(test::PlainLog::messagesOf(run), plain.from(last)) << what;
    EXPECT_EQ(run.m_last_message, 0) << what;

    std::vector<qsizetype> begins = plain.starts;
    if (!plain.messages.empty() && (begins.empty() || begins.front() > 0))
        begins.insert(begins.begin(), 0);
    QBuffer device;
    device.setData(bytes);
    device.open(QIODevice::ReadOnly);
    const LogRange whole = wholeLog(device);
    const std::vector<LogRun> runs = listRuns(device, whole);
    ASSERT_EQ(runs.size(), begins.size()) << what;
    LogCounts sum;
    for (std::size_t i = 0; i < runs.size(); ++i) {
        const auto first = plain.messages.begin() + begins[i];
        const auto end
            = i + 1 < begins.size() ? plain.messages.begin() + begins[i + 1] : plain.messages.end();
        EXPECT_EQ(runs[i].range.begin, first->place) << what;
        if (runs.size() - i < 5 || i == 0) {
            EXPECT_EQ(findRunFromEnd(device, whole, qsizetype(runs.size() - 1 - i)), runs[i].range) << what;
        }
        const LogCounts& counts = runs[i].counts;
        EXPECT_EQ(counts.messages, end - first) << what;
        for (qint32 level = 1; level <= 3; ++level)
            EXPECT_EQ(counts.levels[std::size_t(level)],
                std::ranges::count(first, end, level, &test::PlainLog::Message::level))
                << what;
        sum.lines += counts.lines;
    }
    EXPECT_EQ(findRunFromEnd(device, whole, qsizetype(runs.size())), std::nullopt) << what;
    const LogCounts counts = countLog(device, whole);
    EXPECT_EQ(counts.messages, all.GetCount()) << what;
    EXPECT_EQ(counts.lines, all.lineCount()) << what;
    EXPECT_EQ(sum.lines, all.lineCount()) << what;
    // Lines are numbered through.
    for (qsizetype message = 0, line = 0; message < all.GetCount(); ++message) {
        for (; line < all.firstLineOf(message + 1); ++line)
            ASSERT_EQ(all.messageOf(line), message) << what;
    }
}

TEST(QuorilLog, ReadsWhatThePlainestReaderReads)
{
    for (quint32 seed = 0; seed < 150; ++seed) {
        QRandomGenerator random(seed);
        QString text;
        for (int pieces = random.bounded(30); pieces > 0; --pieces)
            text += somePiece(random);
        QByteArray bytes = bytesOf(text);
        bytes.chop(std::min<qsizetype>(bytes.size(), random.bounded(4)));
        expectAsPlain(bytes, "seed " + std::to_string(seed));
    }
    const QByteArray whole = bytesOf(header(u"00000249"_s, u"te\u0416t"_s));
    for (qsizetype size = 0; size <= whole.size(); ++size)
        expectAsPlain(whole.left(size), "cut");
    // Lines longer than the blocks that are searched and parsed, with and without units above 0xFF, and more
    // text than is parsed at once.
    QString text;
    QRandomGenerator random(1);
    for (const int pieces : {1, 150, 600, 3000, 100, 10}) {
        for (int i = 0; i < 500; ++i)
            text += somePiece(random);
        text += QString(1023 * pieces, pieces == 600 ? u'\u0416' : u'x') + header();
        expectAsPlain(bytesOf(text), std::to_string(pieces) + " pieces");
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
