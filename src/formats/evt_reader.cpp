#include "formats/evt_reader.h"

#include <algorithm>
#include <utility>

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
    , m_number(state.oldestNumber)
    , m_endNumber(state.nextNumber)
    , m_isDirty((state.flags & EvtState::Dirty) != 0)
{
}

/// Counts the damaged ground before the record of a number: as many as the numbers say if that can be, at
/// least one.
void EvtReader::endGap(quint32 nextNumber)
{
    if (!m_gap)
        return;
    const quint32 length = m_ring.distance(*m_gap, m_offset);
    const quint32 missing = nextNumber - m_number;
    const bool canBe = missing > 0 && missing <= length / EventRecordView::FixedSize;
    m_damage.add(*std::exchange(m_gap, std::nullopt), canBe ? missing : 1);
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
        if (record) {
            endGap(record->recordNumber());
            m_number = record->recordNumber() + 1;
        } else if (!m_gap) {
            m_gap = m_offset;
        }
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
    endGap(m_endNumber);
    return false;
}

} // namespace quoril
