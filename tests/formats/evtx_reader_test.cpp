#include "formats/evtx_reader.h"

#include "formats/event_log_record.h"
#include "formats/evtx_value.h"
#include "support/event_log_samples.h"
#include "support/real_data.h"
#include "support/utf16.h"

#include <QDateTime>
#include <QRegularExpression>
#include <QXmlStreamReader>
#include <QtEndian>

#include <map>

namespace quoril::test {
namespace {

constexpr qsizetype FirstChunk = 4096;

/// Hexadecimal numbers without the zeros that the exporting tool fills them up with.
QString unfilled(const QString& text)
{
    static const QRegularExpression zeros(u"^0x0*(?=[0-9a-f]+$)"_s);
    return QString(text).replace(zeros, u"0x"_s);
}

/// The strings of an event, without those of white space alone, which the exporting tool leaves empty.
QStringList comparable(const InsertStrings& strings)
{
    QStringList list = strings.toList();
    for (QString& text : list) {
        if (text.trimmed().isEmpty())
            text.clear();
    }
    return list;
}

void readElement(QXmlStreamReader& xml, EventEntry& entry, quint64& keywords)
{
    const QString name = xml.name().toString();
    const auto attribute = [&](QStringView key) { return xml.attributes().value(key.toString()).toString(); };
    const QString classic = attribute(u"EventSourceName");
    const QString qualifiers = attribute(u"Qualifiers");
    if (name == u"Provider"_s) {
        entry.sourceName = classic.isEmpty() ? attribute(u"Name") : classic;
    } else if (name == u"EventID"_s) {
        entry.eventId = qualifiers.toUInt() << 16 | xml.readElementText().toUInt();
    } else if (name == u"Level"_s) {
        const uint level = xml.readElementText().toUInt();
        entry.eventType = level == 1 || level == 2 ? 1 : level == 3 ? 2 : 4;
    } else if (name == u"Task"_s) {
        entry.eventCategory = xml.readElementText().toUShort();
    } else if (name == u"Keywords"_s) {
        keywords = xml.readElementText().toULongLong(nullptr, 0);
    } else if (name == u"TimeCreated"_s) {
        const QDateTime time = QDateTime::fromString(attribute(u"SystemTime").left(19) + u'Z', Qt::ISODate);
        entry.timeGenerated = quint32(time.toSecsSinceEpoch());
    } else if (name == u"EventRecordID"_s) {
        entry.recordNumber = xml.readElementText().toUInt();
    } else if (name == u"Computer"_s) {
        entry.computerName = xml.readElementText();
    } else if (name == u"Data"_s) {
        entry.insertStrings.append(unfilled(xml.readElementText()));
    } else if (name == u"Binary"_s) {
        entry.data = QByteArray::fromHex(xml.readElementText().toLatin1());
    } else if (name == u"UserData"_s) {
        xml.readNextStartElement();
        while (xml.readNextStartElement())
            entry.insertStrings.append(unfilled(xml.readElementText()));
    }
}

/// The events that evtxexport makes of a log, by number; the XML has no time of writing.
std::map<quint32, EventEntry> exportedEvents(const QByteArray& text)
{
    std::map<quint32, EventEntry> events;
    // The tool writes carriage returns as they are, which a parser would drop.
    QByteArray document = "<log>" + text.sliced(text.indexOf("<Event ")) + "</log>";
    QXmlStreamReader xml(document.replace('\r', "&#13;"));
    EventEntry entry;
    quint64 keywords = 0;
    while (!xml.atEnd()) {
        const auto token = xml.readNext();
        if (token == QXmlStreamReader::StartElement && xml.name() == u"Event"_s) {
            entry = {};
            keywords = 0;
        } else if (token == QXmlStreamReader::StartElement) {
            readElement(xml, entry, keywords);
        } else if (token == QXmlStreamReader::EndElement && xml.name() == u"Event"_s) {
            entry.eventType = (keywords & 1ULL << 52) != 0 ? 16
                : (keywords & 1ULL << 53) != 0             ? 8
                                                           : entry.eventType;
            events[entry.recordNumber] = entry;
        }
    }
    EXPECT_FALSE(xml.hasError()) << xml.errorString() << " at line " << xml.lineNumber();
    return events;
}

TEST(EvtxRealLog, IsReadAsEvtxexportReadsIt)
{
    struct Case
    {
        const char16_t* name;
        std::size_t exported;
        std::size_t read; ///< more where the tool gives up on a damaged chunk
    };
    const Case cases[] = {{u"System.evtx", 5009, 5009}, {u"system-small.evtx", 1881, 1881},
        {u"System-truncated.evtx", 194, 283}, {u"bad-chunk.evtx", 267, 298}};
    for (const Case& real : cases) {
        const QString name = QString::fromUtf16(real.name);
        SCOPED_TRACE(qPrintable(name));
        const QByteArray log = realData(name);
        const QByteArray text = outputOf(u"evtxexport"_s, {u"-f"_s, u"xml"_s}, log);
        if (log.isEmpty() || text.isEmpty())
            GTEST_SKIP() << "no real log or no evtxexport";
        std::map<quint32, EventEntry> expected = exportedEvents(text);
        EXPECT_EQ(expected.size(), real.exported);
        const std::vector<EventEntry> entries = readAll<EvtxReader>(log);
        EXPECT_EQ(entries.size(), real.read);
        std::size_t compared = 0;
        for (EventEntry entry : entries) {
            const auto their = expected.find(entry.recordNumber);
            if (their == expected.end())
                continue;
            ++compared;
            EXPECT_NE(entry.timeWritten, 0U);
            EXPECT_EQ(entry.insertBytes, entry.insertStrings.byteSize());
            ASSERT_EQ(comparable(entry.insertStrings), comparable(their->second.insertStrings))
                << entry.recordNumber;
            entry.insertStrings = their->second.insertStrings;
            entry.timeWritten = entry.insertBytes = 0;
            entry.userSid.clear();
            ASSERT_EQ(entry, their->second) << entry.recordNumber;
        }
        EXPECT_EQ(compared, expected.size());
    }
}

TEST(EvtxRealLog, SpansAndDamage)
{
    const QByteArray log = realData(u"System.evtx"_s);
    if (log.isEmpty())
        GTEST_SKIP() << "no real log";
    const std::vector<EventEntry> all = readAll<EvtxReader>(log);
    const EventSpan span{all[1000].timeGenerated, all[1000].timeGenerated + 3600};
    std::vector<EventEntry> expected;
    std::copy_if(all.begin(), all.end(), std::back_inserter(expected),
        [&](const EventEntry& entry) { return span.contains(entry.timeGenerated); });
    EXPECT_LT(expected.size(), all.size());
    EXPECT_EQ(readAll<EvtxReader>(log, span), expected);

    // The largest event ends the log for a buffer that doesn't hold it, though it is outside the span.
    const auto largest = std::ranges::max_element(all, {}, eventLogRecordSize);
    QByteArray copy = log;
    QBuffer buffer(&copy);
    ASSERT_TRUE(buffer.open(QIODevice::ReadOnly));
    auto limited = EvtxReader::open(buffer);
    limited->setRecordLimit(eventLogRecordSize(*largest) - 1);
    limited->setSpan({1, 2});
    EventEntry last;
    EXPECT_FALSE(limited->next(last) || limited->next(last));
    EXPECT_TRUE(limited->isOverLimit());
    EXPECT_EQ(last, *largest);

    // A time before 1970 is in no span, and a zero unit ends a string.
    const QByteArray time = log.mid(FirstChunk + 512 + 16, 8);
    QByteArray early = log;
    early.replace(time, QByteArray(8, '\1'));
    EXPECT_EQ(readAll<EvtxReader>(early).front(), all[1]);
    const QString string = all.back().insertStrings.at(0).toString();
    QByteArray cut = units(string);
    cut[2] = cut[3] = 0;
    QByteArray withZero = log;
    withZero.replace(units(string), cut);
    EXPECT_EQ(readAll<EvtxReader>(withZero).back().insertStrings.at(0), QStringView(string).first(1));

    QByteArray noMagic = log;
    noMagic[FirstChunk] = 'X';
    EXPECT_EQ(readAll<EvtxReader>(noMagic).front().recordNumber, 159U);
    QByteArray badChecksum = log;
    badChecksum[FirstChunk + 52] = char(badChecksum[FirstChunk + 52] ^ 0x55);
    EXPECT_EQ(readAll<EvtxReader>(badChecksum), all);
    EXPECT_TRUE(readAll<EvtxReader>("no event log").empty());
}

TEST(EvtxValue, IsWrittenAsText)
{
    struct Case
    {
        quint8 type;
        const char* hex;
        const char16_t* text;
    };
    using namespace evtx::value_type;
    const Case cases[] = {
        {Null, "", u""},
        {String, "41004200d8000000", u"AB\u00D8"},
        {AnsiString, "4142c400", u"AB\u00C4"},
        {Int8, "80", u"-128"},
        {UInt16, "ffff", u"65535"},
        {Int32, "feffffff", u"-2"},
        {Int64, "0000000000000080", u"-9223372036854775808"},
        {UInt64, "ffffffffffffffff", u"18446744073709551615"},
        {Double, "000000000000f83f", u"1.5"},
        {Bool, "01000000", u"true"},
        {Binary, "00ab10", u"00AB10"},
        {Guid, "7cca5e85b4ec624eb045 1dfa50104289", u"{855ECA7C-ECB4-4E62-B045-1DFA50104289}"},
        {FileTime, "4f87100230 89cb01", u"2010-11-21T03:55:59.626427100Z"},
        {SystemTime, "df0706000200170006000000300 00d03", u"2015-06-23T06:00:48.781Z"},
        {Sid, "010200000000000520000000 20020000", u"S-1-5-32-544"},
        {Sid, "0105000000000005", u""},
        {HexInt32, "00000000", u"0x0"},
        {HexInt64, "e703000000000000", u"0x3e7"},
        {UInt32, "0000", u""},
        {UInt16 | ArrayFlag, "01000200 03", u"1|2||"},
        {String | ArrayFlag, "410000000000 4200", u"A||B|"},
    };
    for (const Case& value : cases) {
        const QByteArray bytes = QByteArray::fromHex(value.hex);
        evtx::Value whole{value.type, bytes};
        QString text;
        evtx::Value item;
        if (!whole.isArray())
            evtx::appendText(whole, text);
        while (whole.isArray() && evtx::takeItem(whole, item)) {
            evtx::appendText(item, text);
            text += u'|';
        }
        EXPECT_EQ(text, QString::fromUtf16(value.text)) << value.hex;
    }
}

} // namespace
} // namespace quoril::test
