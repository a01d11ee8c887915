#pragma once

#include "formats/event_record.h"

#include <QByteArrayView>

#include <optional>

namespace quoril {

/// One EVENTLOGRECORD in memory that belongs to someone else. The fixed part is known to be there; every
/// offset in it is checked where it is used.
class EventRecordView
{
public:
    static constexpr quint32 FixedSize = 56;
    static constexpr quint32 Signature = 0x654C664C; ///< "LfLe", the field Reserved

    /// The record that `bytes` begins with; none if its Length is less than the fixed part or reaches
    /// beyond `bytes`.
    static std::optional<EventRecordView> first(QByteArrayView bytes);

    QByteArrayView bytes() const { return m_bytes; }
    quint32 length() const { return quint32(m_bytes.size()); }
    bool hasSignature() const { return field(4) == Signature; }
    quint32 recordNumber() const { return field(8); }
    quint32 timeGenerated() const { return field(12); }

    /// Whether the length is repeated in the last four bytes, as it is in a file.
    bool isClosed() const;

    /// Makes `entry` the record's event. A string or block whose offsets leave the record is empty, a
    /// string without terminator ends with its area, and strings that are not there are left out.
    void decode(EventEntry& entry) const;

private:
    explicit EventRecordView(QByteArrayView bytes) : m_bytes(bytes) { }

    quint32 field(qsizetype offset) const;
    quint16 shortField(qsizetype offset) const;
    QByteArrayView area(quint32 offset, quint32 size) const;

    QByteArrayView m_bytes;
};

/// Walks a block of EVENTLOGRECORDs, as ReadEventLogW fills it, by their lengths.
class EventRecordBlock
{
public:
    explicit EventRecordBlock(QByteArrayView bytes) : m_rest(bytes) { }

    /// The next record; none at the end of the block or where a length is damaged.
    std::optional<EventRecordView> next();

private:
    QByteArrayView m_rest;
};

/// What appendEventLogRecord() appends, in bytes.
quint32 eventLogRecordSize(const EventEntry& entry);

/// Appends `entry` to `out` as a whole EVENTLOGRECORD, padded and closed as in a file. Texts are cut at an
/// embedded zero unit; `entry.insertBytes` is not looked at.
void appendEventLogRecord(QByteArray& out, const EventEntry& entry);

} // namespace quoril
