#include "formats/evt_reader.h"

#include <algorithm>

namespace quoril {

Result<EvtReader> EvtReader::open(QIODevice& device)
{
    const Result<EvtState> state = readEvtState(device);
    if (!state)
        return state.failure();
    return EvtReader(device, *state);
}

EvtReader::EvtReader(QIODevice& device, const EvtState& state)
    : m_ring(device, state.fileSize)
    , m_offset(state.oldestOffset)
    , m_left(m_ring.distance(state.oldestOffset, state.endOffset))
{
}

bool EvtReader::next(EventEntry& entry)
{
    // Records keep to boundaries of four bytes, so that is how damaged ground is searched.
    constexpr quint32 Step = 4;
    while (m_left > 0) {
        const quint32 place = m_ring.recordPlace(m_offset);
        if (place != m_offset) {
            m_left -= std::min(m_left, m_ring.distance(m_offset, place));
            m_offset = place;
            continue;
        }
        auto record = m_ring.record(m_offset);
        if (record && record->length() > m_left)
            record.reset();
        const quint32 walked = std::min(m_left, record ? record->length() : Step);
        m_offset = m_ring.advance(m_offset, walked);
        m_left -= walked;
        if (record && record->length() > m_recordLimit) {
            m_left = 0;
            m_isOverLimit = true;
            entry.timeGenerated = record->timeGenerated();
            return false;
        }
        if (record && m_span.contains(record->timeGenerated())) {
            record->decode(entry);
            return true;
        }
    }
    return false;
}

} // namespace quoril
