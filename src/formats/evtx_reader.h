#pragma once

#include "formats/error.h"
#include "formats/event_record.h"
#include "formats/evtx_chunk.h"

#include <QIODevice>

#include <vector>

namespace quoril {

/// Reads an event log (.evtx) in the order of its chunks, one chunk of 64 KB in memory at a time, and
/// gives each event in the shape of the classic reading call.
///
/// A chunk whose magic is damaged is skipped and counted; what is whole in a partial last chunk, or in a
/// chunk with a bad checksum, is read.
class EvtxReader
{
public:
    /// Opens the log on `device`, which is open for reading, random-access, and outlives the reader. Fails
    /// with EventLogFileCorrupt where the bytes are no event log.
    static Result<EvtxReader> open(QIODevice& device);

    /// Limits next() to events of the span; others are skipped before their strings are decoded.
    void setSpan(const EventSpan& span) { m_span = span; }

    /// Ends the log at the first event that takes more bytes as an EVENTLOGRECORD, as a reading buffer of
    /// that size does. Outside the span only events whose own record here has more than an eighth of them
    /// are looked at: what a smaller one unfolds to is not known without decoding all.
    void setRecordLimit(quint32 bytes) { m_chunk.setRecordLimit(bytes); }
    /// Whether such an event ended the log; it is then what the last next() made of the entry.
    bool isOverLimit() const { return m_chunk.isOverLimit(); }

    /// Makes `entry` the next event; false at the end of the log.
    bool next(EventEntry& entry);

    /// What could not be read: whole once next() was false.
    const EventDamage& damage() const { return m_damage; }

    /// The file was not closed: what was written last may be missing in it.
    bool isDirty() const { return m_isDirty; }

private:
    explicit EvtxReader(QIODevice& device) : m_device(&device) { }

    void findChunks();
    void lookAtNoChunk(qint64 offset);
    void takeDamage();

    bool loadChunk();

    QIODevice* m_device;
    std::vector<qint64> m_chunks; ///< offsets in the file, in order of their record numbers
    std::size_t m_nextChunk = 0;
    bool m_hasChunk = false;
    EventDamage m_damage;
    bool m_isDirty = false;
    evtx::Chunk m_chunk;
    EventSpan m_span;
};

} // namespace quoril
