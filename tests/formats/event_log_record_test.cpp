#include "formats/event_log_record.h"

#include <QtEndian>

namespace quoril::test {

using namespace Qt::StringLiterals;

namespace {

EventEntry sampleEntry()
{
    EventEntry entry;
    entry.recordNumber = 7;
    entry.timeGenerated = 1'300'000'000;
    entry.timeWritten = 1'300'000'002;
    entry.eventId = 0xC0010203;
    entry.eventType = event_type::Warning;
    entry.eventCategory = 3;
    entry.sourceName = u"QUORIL 5"_s;
    entry.computerName = u"HOST"_s;
    for (const QStringView text : {u"first", u"", u"\xD800 third"})
        entry.insertStrings.append(text);
    entry.insertBytes = entry.insertStrings.byteSize();
    entry.userSid = QByteArray::fromHex("010100000000000512000000");
    entry.data = QByteArray("\1\0\2", 3);
    return entry;
}

EventEntry decoded(QByteArrayView bytes)
{
    EventEntry entry;
    if (const auto record = EventRecordView::first(bytes))
        record->decode(entry);
    return entry;
}

TEST(EventLogRecord, DecodesWhatItEncodes)
{
    QByteArray bytes;
    appendEventLogRecord(bytes, sampleEntry());
    EXPECT_EQ(bytes.size() % 4, 0);
    EXPECT_EQ(eventLogRecordSize(sampleEntry()), bytes.size());
    EXPECT_TRUE(EventRecordView::first(bytes)->isClosed());
    EXPECT_EQ(decoded(bytes), sampleEntry());
}

TEST(EventLogRecord, WalksABlockUpToADamagedLength)
{
    QByteArray bytes;
    for (quint32 i = 0; i < 3; ++i) {
        EventEntry entry = sampleEntry();
        entry.recordNumber = i;
        appendEventLogRecord(bytes, entry);
    }
    const qsizetype length = bytes.size() / 3;
    const auto countedWith = [&](quint32 lastLength, qsizetype size) {
        QByteArray block = bytes.first(size);
        qToLittleEndian(lastLength, block.data() + 2 * length);
        EventRecordBlock records(block);
        quint32 count = 0;
        while (const auto record = records.next())
            EXPECT_EQ(record->recordNumber(), count++);
        return count;
    };
    EXPECT_EQ(countedWith(quint32(length), bytes.size()), 3U);
    EXPECT_EQ(countedWith(quint32(length), bytes.size() - 1), 2U);
    for (const quint32 damaged : {0U, 55U, quint32(length) + 1, 0xFFFFFFFFU})
        EXPECT_EQ(countedWith(damaged, bytes.size()), 2U) << damaged;
}

TEST(EventLogRecord, KeepsDamagedOffsetsInsideTheRecord)
{
    constexpr int NumStrings = 26;
    constexpr int StringOffset = 36;
    constexpr int UserSidLength = 40;
    constexpr int DataLength = 48;
    constexpr int DataOffset = 52;
    struct Case
    {
        int field;
        quint32 value;
        qsizetype strings;
        qsizetype sidBytes;
        qsizetype dataBytes;
    };
    const EventEntry sample = sampleEntry();
    const qsizetype strings = sample.insertStrings.count();
    const Case cases[] = {
        {StringOffset, 0, 0, 12, 3},
        {StringOffset, 0xFFFFFFFF, 0, 12, 3},
        {DataOffset, 0xFFFFFFFE, 0, 12, 0},
        {DataOffset, 10, 0, 12, 0},
        {DataLength, 0xFFFFFFFF, strings, 12, 0},
        {UserSidLength, 0x7FFFFFFF, strings, 0, 3},
        {NumStrings, 0xFFFF | 3U << 16, strings, 12, 3},
    };
    for (const Case& damaged : cases) {
        QByteArray bytes;
        appendEventLogRecord(bytes, sample);
        qToLittleEndian(damaged.value, bytes.data() + damaged.field);
        const EventEntry entry = decoded(bytes);
        SCOPED_TRACE(damaged.field);
        EXPECT_EQ(entry.insertStrings.count(), damaged.strings);
        EXPECT_EQ(entry.insertBytes, damaged.strings == 0 ? 0 : sample.insertBytes);
        EXPECT_EQ(entry.userSid.size(), damaged.sidBytes);
        EXPECT_EQ(entry.data.size(), damaged.dataBytes);
        EXPECT_EQ(entry.computerName, sample.computerName);
    }
}

TEST(EventLogRecord, EndsUnterminatedNamesWithTheRecord)
{
    QByteArray bytes;
    appendEventLogRecord(bytes, EventEntry());
    for (qsizetype i = EventRecordView::FixedSize; i < bytes.size(); ++i)
        bytes[i] = 'A';
    const EventEntry entry = decoded(bytes);
    EXPECT_EQ(entry.sourceName.size(), (bytes.size() - EventRecordView::FixedSize) / 2);
    EXPECT_TRUE(entry.computerName.isEmpty());
}

} // namespace
} // namespace quoril::test
