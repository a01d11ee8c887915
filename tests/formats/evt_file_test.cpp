#include "formats/evt_appender.h"
#include "formats/evt_reader.h"
#include "support/event_log_samples.h"
#include "support/real_data.h"

#include <QRegularExpression>
#include <QtEndian>

#include <chrono>

namespace quoril::test {

using namespace Qt::StringLiterals;

namespace {

constexpr quint32 Small = EvtAppender::Granularity;

EventEntry numbered(quint32 number)
{
    // Lengths vary, so that the file's end meets records at every offset.
    return eventOf(number, u"QUORIL"_s, {QString(qsizetype(number * 37 % 400), u'x')});
}

/// The log `bytes` with events `from` to `to` appended in one session.
QByteArray appended(QByteArray bytes, quint32 from, quint32 to, bool finished = true, quint32 maximum = Small)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadWrite);
    auto appender = EvtAppender::open(buffer, maximum);
    EXPECT_TRUE(appender.ok());
    for (quint32 number = from; number <= to; ++number)
        EXPECT_TRUE(appender->append(numbered(number)).ok());
    if (finished) {
        EXPECT_TRUE(appender->finish().ok());
    }
    return bytes;
}

/// Checks that the log ends with event `last` and goes back from it without a gap; gives its events' number.
std::size_t checkRun(const QByteArray& bytes, quint32 last)
{
    const std::vector<EventEntry> entries = readAll<EvtReader>(bytes);
    EXPECT_FALSE(entries.empty());
    for (std::size_t i = 0; i < entries.size(); ++i) {
        EXPECT_EQ(entries[i].recordNumber, last - (entries.size() - 1 - i));
        EXPECT_EQ(entries[i].insertStrings, numbered(entries[i].recordNumber).insertStrings);
    }
    return entries.size();
}

/// A device that ends all writing after a number of writes and half of one more, as a kill does.
class DyingBuffer : public QBuffer
{
public:
    DyingBuffer(QByteArray* bytes, int writes) : QBuffer(bytes), m_left(writes) { }

protected:
    qint64 writeData(const char* data, qint64 size) override
    {
        const qint64 part = m_left > 0 ? size : m_left == 0 ? size / 2 : 0;
        --m_left;
        QBuffer::writeData(data, part);
        return size;
    }

private:
    int m_left;
};

TEST(EvtAppender, GrowsThenWrapsOverTheOldest)
{
    const QByteArray few = appended({}, 1, 5);
    EXPECT_EQ(few.size(), qsizetype(Small));
    EXPECT_EQ(checkRun(few, 5), 5U);
    const QByteArray grown = appended(few, 6, 400, true, 3 * Small);
    EXPECT_EQ(grown.size(), qsizetype(3 * Small));

    QByteArray bytes = few;
    for (quint32 number = 6; number < 1200; ++number) {
        bytes = appended(bytes, number, number);
        ASSERT_EQ(bytes.size(), qsizetype(Small));
        if (number % 7 == 0 || number > 1100) {
            ASSERT_GT(checkRun(bytes, number), 4U) << number;
        }
    }
}

TEST(EvtAppender, EveryInterruptedAppendLeavesAReadableLog)
{
    QByteArray bytes = appended({}, 1, 80);
    for (quint32 number = 81; number < 280; ++number) {
        for (int writes = 0; writes < 10; ++writes) {
            QByteArray interrupted = bytes;
            DyingBuffer buffer(&interrupted, writes);
            buffer.open(QIODevice::ReadWrite);
            auto appender = EvtAppender::open(buffer, Small);
            ASSERT_TRUE(appender && appender->append(numbered(number)));
            const auto entries = readAll<EvtReader>(interrupted);
            ASSERT_FALSE(entries.empty()) << number << " after " << writes;
            const quint32 last = entries.back().recordNumber;
            ASSERT_TRUE(last == number || last == number - 1)
                << number << " after " << writes << ": " << last;
            checkRun(interrupted, last);
        }
        bytes = appended(bytes, number, number, number % 2 == 0);
    }
}

TEST(EvtAppender, RefusesWhatDoesNotFit)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadWrite);
    auto appender = EvtAppender::open(buffer, Small);
    ASSERT_TRUE(appender.ok());
    EventEntry large = numbered(1);
    large.data.fill('d', qsizetype(Small));
    EXPECT_EQ(appender->append(large).errorNumber(), error::InvalidParameter);
    EXPECT_EQ(appender->appendRecord("short").errorNumber(), error::InvalidParameter);
    EXPECT_TRUE(readAll<EvtReader>(bytes).empty());
}

TEST(EvtReader, SurvivesDamage)
{
    const QByteArray log = appended({}, 1, 300);
    const std::size_t count = checkRun(log, 300);

    QByteArray stale = log;
    qToLittleEndian(quint32(EvtState::Dirty), stale.data() + 36);
    qToLittleEndian(0x12345U, stale.data() + 16);
    EXPECT_EQ(checkRun(stale, 300), count);

    QByteArray hole = log;
    const quint32 oldest = qFromLittleEndian<quint32>(log.constData() + 16);
    qToLittleEndian(0xFFFFFFFFU, hole.data() + oldest);
    EXPECT_EQ(checkRun(hole, 300), count - 1);

    // Without its end record the log goes on by its header, unless that is from before the last session.
    QByteArray endless = log;
    endless[qFromLittleEndian<qint32>(log.constData() + 20) + 20] ^= 1;
    EXPECT_EQ(checkRun(appended(endless, 301, 301), 301), checkRun(appended(log, 301, 301), 301));
    const QByteArray before = appended({}, 1, 5);
    QByteArray killed = appended(before, 6, 40, false);
    const auto sixth = qFromLittleEndian<qint32>(before.constData() + 20);
    qToLittleEndian(0xFFFFFFFFU, killed.data() + sixth);
    const auto survivors = readAll<EvtReader>(appended(killed, 41, 41));
    ASSERT_EQ(survivors.size(), 40U);
    EXPECT_EQ(survivors[5].recordNumber, 7U);

    // A length off the boundaries is damage, however well the record closes.
    const auto oddLength = qFromLittleEndian<quint32>(killed.constData() + 48) + 1;
    QByteArray odd = before;
    qToLittleEndian(oddLength, odd.data() + 48);
    qToLittleEndian(oddLength, odd.data() + 48 + oddLength - 4);
    EXPECT_EQ(checkRun(appended(odd, 6, 6), 6), 4U);

    const auto spanned = readAll<EvtReader>(log, {290, 295});
    ASSERT_EQ(spanned.size(), 6U);
    EXPECT_EQ(spanned.front().timeGenerated, 290U);

    for (const QByteArray& bytes : {QByteArray(), QByteArray(200, 'x'), log.first(87), log.first(48)}) {
        QByteArray copy = bytes;
        QBuffer buffer(&copy);
        buffer.open(QIODevice::ReadOnly);
        EXPECT_EQ(EvtReader::open(buffer).errorNumber(), error::EventLogFileCorrupt);
    }
}

TEST(EvtReader, EndsSoonOnGroundMadeToHurt)
{
    // At every boundary begins what may be a record, as long as half of the file.
    constexpr quint32 Size = 8 << 20;
    EvtState state;
    state.fileSize = Size;
    state.endOffset = Size - EvtRing::EndRecordSize;
    state.nextNumber = 2;
    state.oldestNumber = 1;
    QByteArray ground("\x00\x00\x40\x00LfLe", 8);
    QByteArray bytes
        = evtHeaderBytes(state) + ground.repeated(qsizetype(Size) / 8 - 11) + evtEndRecordBytes(state);
    ASSERT_EQ(bytes.size(), qsizetype(Size));
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(readAll<EvtReader>(bytes).empty());
    EXPECT_EQ(appended(bytes, 2, 2, true, Size).size(), qsizetype(Size));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
}

TEST(EvtRealLog, IsReadAsEvtexportReadsIt)
{
    const QByteArray log = realData(u"SysEvent.Evt"_s);
    const QByteArray text = outputOf(u"evtexport"_s, {}, log);
    if (log.isEmpty() || text.isEmpty())
        GTEST_SKIP() << "no real log or no evtexport";
    // The other lines of the export give times, types, categories and data in words.
    static const QRegularExpression line(
        u"^(Event number|Computer name|Source name|Event identifier|Number of strings|String: \\d+)\\t+: (.*)$"_s,
        QRegularExpression::MultilineOption);
    QStringList theirs;
    for (auto found = line.globalMatch(QString::fromUtf8(text)); found.hasNext();)
        theirs.append(found.next().captured(2).trimmed());
    QStringList ours;
    for (const EventEntry& entry : readAll<EvtReader>(log)) {
        ours << QString::number(entry.recordNumber) << entry.computerName << entry.sourceName
             << u"0x%1 (%2)"_s.arg(entry.eventId, 8, 16, QChar(u'0')).arg(entry.eventId)
             << QString::number(entry.insertStrings.count());
        for (const QString& string : entry.insertStrings.toList())
            ours << string.section(u'\n', 0, 0).trimmed();
    }
    ASSERT_EQ(ours.size(), theirs.size());
    for (qsizetype i = 0; i < ours.size(); ++i)
        ASSERT_EQ(ours[i], theirs[i]) << i;
}

TEST(EvtRealLog, IsWrittenAgainByteForByte)
{
    const QByteArray log = realData(u"SysEvent.Evt"_s);
    if (log.isEmpty())
        GTEST_SKIP() << "no real log";
    QByteArray bytes = log;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadWrite);
    const EvtState whole = *readEvtState(buffer);
    EvtRing ring(buffer, whole.fileSize);

    std::vector<QByteArray> records;
    for (quint32 offset = whole.oldestOffset; offset != whole.endOffset;) {
        const auto record = ring.record(offset);
        ASSERT_TRUE(record);
        records.push_back(record->bytes().toByteArray());
        offset = ring.advance(offset, record->length());
    }
    ASSERT_EQ(records.size(), 6063U);

    // The log as it was when only its oldest record stood, then all others again.
    EvtState first = whole;
    first.endOffset = ring.advance(whole.oldestOffset, quint32(records.front().size()));
    first.nextNumber = whole.oldestNumber + 1;
    const QByteArray end = evtEndRecordBytes(first);
    bytes.replace(0, EvtRing::HeaderSize, evtHeaderBytes(first));
    bytes.replace(qsizetype(whole.endOffset), end.size(), QByteArray(end.size(), '\0'));
    bytes.replace(qsizetype(first.endOffset), end.size(), end);
    auto appender = EvtAppender::open(buffer, whole.fileSize);
    ASSERT_TRUE(appender.ok());
    std::size_t encodedAlike = 0;
    for (std::size_t i = 1; i < records.size(); ++i) {
        ASSERT_TRUE(appender->appendRecord(records[i]).ok());
        EventEntry entry;
        EventRecordView::first(records[i])->decode(entry);
        QByteArray encoded;
        appendEventLogRecord(encoded, entry);
        encodedAlike += encoded == records[i] ? 1U : 0U;
    }
    EXPECT_EQ(bytes.sliced(EvtRing::HeaderSize), log.sliced(EvtRing::HeaderSize));
    ASSERT_TRUE(appender->finish().ok());
    EvtState clean = whole;
    clean.flags &= ~EvtState::Dirty;
    EXPECT_EQ(bytes.first(EvtRing::HeaderSize), evtHeaderBytes(clean));
    // Drivers' records carry remains of memory in their padding, which no encoder knows.
    EXPECT_GT(encodedAlike, 5890U);
}

} // namespace
} // namespace quoril::test
