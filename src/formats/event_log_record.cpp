#include "formats/event_log_record.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>

namespace quoril {
namespace {

namespace offset {
constexpr qsizetype RecordNumber = 8;
constexpr qsizetype TimeGenerated = 12;
constexpr qsizetype TimeWritten = 16;
constexpr qsizetype EventId = 20;
constexpr qsizetype EventType = 24;
constexpr qsizetype NumStrings = 26;
constexpr qsizetype EventCategory = 28;
constexpr qsizetype StringOffset = 36;
constexpr qsizetype UserSidLength = 40;
constexpr qsizetype UserSidOffset = 44;
constexpr qsizetype DataLength = 48;
constexpr qsizetype DataOffset = 52;
} // namespace offset

/// Takes the zero-terminated string at the front of `area` away from it and appends its units to `out`.
void takeString(QByteArrayView& area, QString& out)
{
    const qsizetype limit = area.size() / 2;
    const char* begin = area.data();
    qsizetype units = 0;
    while (units < limit && (begin[units * 2] != 0 || begin[units * 2 + 1] != 0))
        ++units;
    const qsizetype before = out.size();
    out.resize(before + units);
    if (units > 0)
        qFromLittleEndian<char16_t>(begin, units, out.data() + before);
    area = area.sliced(std::min(limit, units + 1) * 2);
}

/// As takeString(), but keeps the buffer of `out` when the text is the one it holds already: names repeat
/// from record to record.
void takeName(QByteArrayView& area, QString& out, QString& scratch)
{
    scratch.resize(0);
    takeString(area, scratch);
    if (scratch != out)
        out = QString(scratch.constData(), scratch.size());
}

void copyBytes(QByteArrayView bytes, QByteArray& out)
{
    out.resize(bytes.size());
    if (!bytes.isEmpty())
        std::memcpy(out.data(), bytes.data(), std::size_t(bytes.size()));
}

void put(QByteArray& out, qsizetype at, quint32 value)
{
    qToLittleEndian(value, out.data() + at);
}
void putShort(QByteArray& out, qsizetype at, quint16 value)
{
    qToLittleEndian(value, out.data() + at);
}

void appendString(QByteArray& out, QStringView text)
{
    const qsizetype end = text.indexOf(QChar(0));
    const QStringView kept = end < 0 ? text : text.first(end);
    const qsizetype before = out.size();
    out.resize(before + (kept.size() + 1) * 2);
    if (!kept.isEmpty())
        qToLittleEndian<char16_t>(kept.utf16(), kept.size(), out.data() + before);
    out[out.size() - 2] = out[out.size() - 1] = 0;
}

} // namespace

std::optional<EventRecordView> EventRecordView::first(QByteArrayView bytes)
{
    if (bytes.size() < qsizetype(FixedSize))
        return std::nullopt;
    const quint32 length = qFromLittleEndian<quint32>(bytes.data());
    if (length < FixedSize || length > std::size_t(bytes.size()))
        return std::nullopt;
    return EventRecordView(bytes.first(length));
}

quint32 EventRecordView::field(qsizetype offset) const
{
    return qFromLittleEndian<quint32>(m_bytes.data() + offset);
}

quint16 EventRecordView::shortField(qsizetype offset) const
{
    return qFromLittleEndian<quint16>(m_bytes.data() + offset);
}

bool EventRecordView::isClosed() const
{
    return length() >= FixedSize + 4 && field(m_bytes.size() - 4) == length();
}

QByteArrayView EventRecordView::area(quint32 offset, quint32 size) const
{
    if (offset < FixedSize || offset > length() || size > length() - offset)
        return {};
    return m_bytes.sliced(offset, size);
}

void EventRecordView::decode(EventEntry& entry) const
{
    entry.recordNumber = recordNumber();
    entry.timeGenerated = timeGenerated();
    entry.timeWritten = field(offset::TimeWritten);
    entry.eventId = field(offset::EventId);
    entry.eventType = shortField(offset::EventType);
    entry.eventCategory = shortField(offset::EventCategory);

    entry.insertStrings.clear();
    QByteArrayView names = m_bytes.sliced(FixedSize);
    QString& scratch = entry.insertStrings.units();
    takeName(names, entry.sourceName, scratch);
    takeName(names, entry.computerName, scratch);
    entry.insertStrings.clear();

    const quint32 stringOffset = field(offset::StringOffset);
    const quint32 dataOffset = field(offset::DataOffset);
    QByteArrayView strings;
    if (dataOffset >= stringOffset)
        strings = area(stringOffset, dataOffset - stringOffset);
    entry.insertBytes = quint32(strings.size());
    for (quint16 left = shortField(offset::NumStrings); left > 0 && strings.size() >= 2; --left) {
        takeString(strings, entry.insertStrings.units());
        entry.insertStrings.endString();
    }

    copyBytes(area(field(offset::UserSidOffset), field(offset::UserSidLength)), entry.userSid);
    copyBytes(area(dataOffset, field(offset::DataLength)), entry.data);
}

std::optional<EventRecordView> EventRecordBlock::next()
{
    const auto record = EventRecordView::first(m_rest);
    m_rest = record ? m_rest.sliced(record->length()) : QByteArrayView();
    return record;
}

quint32 eventLogRecordSize(const EventEntry& entry)
{
    constexpr qsizetype ClosingLength = 4;
    const auto bytesOf = [](QStringView text) {
        const qsizetype zero = text.indexOf(QChar(u'\0'));
        return 2 * ((zero < 0 ? text.size() : zero) + 1);
    };
    const qsizetype content = EventRecordView::FixedSize + bytesOf(entry.sourceName)
        + bytesOf(entry.computerName) + entry.userSid.size() + entry.insertStrings.byteSize()
        + entry.data.size();
    return quint32(content + 4 - content % 4 + ClosingLength);
}

void appendEventLogRecord(QByteArray& out, const EventEntry& entry)
{
    const qsizetype start = out.size();
    out.resize(start + EventRecordView::FixedSize);
    std::memset(out.data() + start, 0, EventRecordView::FixedSize);
    appendString(out, entry.sourceName);
    appendString(out, entry.computerName);
    put(out, start + offset::UserSidOffset, quint32(out.size() - start));
    put(out, start + offset::UserSidLength, quint32(entry.userSid.size()));
    out.append(entry.userSid);
    put(out, start + offset::StringOffset, quint32(out.size() - start));
    const qsizetype strings = std::min<qsizetype>(entry.insertStrings.count(), 0xFFFF);
    for (qsizetype i = 0; i < strings; ++i)
        appendString(out, entry.insertStrings.at(i));
    put(out, start + offset::DataOffset, quint32(out.size() - start));
    put(out, start + offset::DataLength, quint32(entry.data.size()));
    out.append(entry.data);
    // A record is never without padding: one that ends on a boundary gets four bytes.
    out.append(4 - (out.size() - start) % 4, '\0');

    const quint32 length = quint32(out.size() - start) + 4;
    out.resize(out.size() + 4);
    put(out, out.size() - 4, length);
    put(out, start, length);
    put(out, start + 4, EventRecordView::Signature);
    put(out, start + offset::RecordNumber, entry.recordNumber);
    put(out, start + offset::TimeGenerated, entry.timeGenerated);
    put(out, start + offset::TimeWritten, entry.timeWritten);
    put(out, start + offset::EventId, entry.eventId);
    putShort(out, start + offset::EventType, entry.eventType);
    putShort(out, start + offset::NumStrings, quint16(strings));
    putShort(out, start + offset::EventCategory, entry.eventCategory);
}

} // namespace quoril
