#pragma once

#include "formats/evt_layout.h"

namespace quoril {

/// Reads a classic event log (.Evt), oldest event first, through a window of bounded size.
class EvtReader
{
public:
    /// Opens the log on `device`, which is open for reading, random-access, and outlives the reader. Fails
    /// with EventLogFileCorrupt where the bytes are no classic event log.
    static Result<EvtReader> open(QIODevice& device);

    /// Limits next() to events of the span; others are skipped without being decoded.
    void setSpan(const EventSpan& span) { m_span = span; }

    /// Ends the log at the first record of more bytes, in the span or not, as a reading buffer of that size
    /// does.
    void setRecordLimit(quint32 bytes) { m_recordLimit = bytes; }
    /// Whether such a record ended the log; the entry of the last next() then has its timeGenerated.
    bool isOverLimit() const { return m_isOverLimit; }

    /// Makes `entry` the next event; false at the end of the log. Damaged ground is skipped.
    bool next(EventEntry& entry);

private:
    EvtReader(QIODevice& device, const EvtState& state);

    EvtRing m_ring;
    EventSpan m_span;
    quint32 m_recordLimit = NoRecordLimit;
    bool m_isOverLimit = false;
    quint32 m_offset;
    quint32 m_left; ///< bytes up to the end record
};

} // namespace quoril
