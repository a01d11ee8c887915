#pragma once

#include "formats/event_damage.h"
#include "formats/evt_layout.h"

#include <optional>

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

    /// Makes `entry` the next event; false at the end of the log. Damaged ground is skipped and counted.
    bool next(EventEntry& entry);

    /// What could not be read: whole once next() was false.
    const EventDamage& damage() const { return m_damage; }

    /// The file was not closed: its header is stale.
    bool isDirty() const { return m_isDirty; }

private:
    EvtReader(QIODevice& device, const EvtState& state);

    EvtRing m_ring;
    EventSpan m_span;
    quint32 m_recordLimit = NoRecordLimit;
    bool m_isOverLimit = false;
    quint32 m_offset;
    quint32 m_left; ///< bytes up to the end record
    quint32 m_number; ///< that the next record ought to have
    quint32 m_endNumber; ///< of the record to come after the last
    bool m_isDirty;
    std::optional<quint32> m_gap; ///< where the damaged ground begins that is being walked
    EventDamage m_damage;

    void endGap(quint32 nextNumber);
};

} // namespace quoril
