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

    /// Makes `entry` the next event; false at the end of the log. Damaged ground is skipped.
    bool next(EventEntry& entry);

private:
    EvtReader(QIODevice& device, const EvtState& state);

    EvtRing m_ring;
    EventSpan m_span;
    quint32 m_offset;
    quint32 m_left; ///< bytes up to the end record
};

} // namespace quoril
