#pragma once

#include "formats/event_damage.h"
#include "formats/event_record.h"
#include "formats/evtx_program.h"

#include <QByteArray>

#include <unordered_map>

namespace quoril::evtx {

/// One chunk of an event log and the programs of the templates it holds.
class Chunk
{
public:
    static constexpr quint32 Size = 64 * 1024;
    static constexpr quint32 HeaderSize = 512;

    /// Whether `bytes` begin with a chunk's magic.
    static bool hasMagic(QByteArrayView bytes);
    /// The number of the chunk's first record, by its header; `bytes` have at least 32 bytes.
    static quint64 firstRecord(QByteArrayView bytes);

    /// The chunk's bytes, to be filled before begin(). Fewer than Size are a partial chunk.
    QByteArray& bytes() { return m_bytes; }

    /// Goes to the first record.
    void begin();

    /// As EvtxReader::setRecordLimit(); next() is false from the event over the limit on.
    void setRecordLimit(quint32 bytes) { m_recordLimit = bytes; }
    bool isOverLimit() const { return m_isOverLimit; }

    /// Makes `entry` the chunk's next event of the span; false at the chunk's end.
    bool next(const EventSpan& span, EventEntry& entry);

    /// What of the chunk could not be read up to now; whole once next() was false. Offsets are of the chunk.
    const EventDamage& damage() const { return m_damage; }

    /// How many records, whole by their own marks, stand in bytes without a chunk's header.
    static quint64 strayRecords(QByteArrayView bytes);

private:
    /// What of an event is not yet in `entry` while its record is read.
    struct Pending
    {
        quint32 qualifiers = 0;
        quint32 eventId = 0;
        quint64 level = 0;
        quint64 keywords = 0;
        bool hasTime = false;
        bool hasId = false;
        bool hasSource = false;
        bool hasClassicSource = false;
        bool hasComputer = false;
        bool noString = false; ///< the open element is an array of no strings
        bool outside = false; ///< and its size is of no interest
        bool isMeasured = false; ///< it may be over the limit
        bool isBeforeEpoch = false;
        int depth = 0;
        qint64 budget = 0;
    };

    enum class Decoded
    {
        Event,
        OutsideSpan,
        OverLimit,
        Damaged
    };

    Decoded decode(quint32 offset, quint32 end, EventEntry& entry);
    void countMissing();
    void runFragment(quint32 offset, quint32 end, Place place, EventEntry& entry);
    void runInstance(quint32 offset, quint32 limit, Place place, EventEntry& entry);
    void run(const Program& program, std::size_t firstValue, std::size_t valueCount, quint32 limit,
        EventEntry& entry);
    void substitute(const Value& value, Place place, EventEntry& entry);
    void setField(const Value& value, Place place, EventEntry& entry);
    void setName(const QString& name, Place place, EventEntry& entry);
    void setBinary(const Value& value, EventEntry& entry);
    void endString(EventEntry& entry);
    void appendStrings(Value value, EventEntry& entry);
    void finish(EventEntry& entry) const;
    void checkSpan(const EventEntry& entry);
    bool isInSpan(const EventEntry& entry) const;
    const Program& programOf(quint32 definition, Place place);

    QByteArray m_bytes;
    QByteArrayView m_chunk;
    quint32 m_offset = 0;
    quint32 m_end = 0;
    quint32 m_gapBegin = 0; ///< where the damaged ground begins that is being walked, 0 outside of any
    quint64 m_gaps = 0;
    quint64 m_records = 0; ///< whole by their marks, whether decoded or not
    EventDamage m_damage;
    EventSpan m_span;
    quint32 m_recordLimit = NoRecordLimit;
    bool m_isOverLimit = false;
    std::unordered_map<quint64, Program> m_programs; ///< by definition and place
    std::vector<Value> m_values; ///< of the instances that are being run, innermost last
    Pending m_pending;
    QString m_scratch;
};

} // namespace quoril::evtx
