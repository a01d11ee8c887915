#include "formats/evt_layout.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <limits>
#include <vector>

namespace quoril {
namespace {

constexpr quint32 WindowSize = 256 * 1024;
constexpr std::array<quint32, 5> EndMarks = {0x28, 0x11111111, 0x22222222, 0x33333333, 0x44444444};

template <std::size_t N> std::array<quint32, N> words(QByteArrayView bytes)
{
    std::array<quint32, N> values;
    qFromLittleEndian<quint32>(bytes.data(), qsizetype(N), values.data());
    return values;
}

template <std::size_t N> QByteArray wordBytes(const std::array<quint32, N>& values)
{
    QByteArray bytes(qsizetype(N * 4), Qt::Uninitialized);
    qToLittleEndian<quint32>(values.data(), qsizetype(N), bytes.data());
    return bytes;
}

/// Whether the records from the oldest on lead to the end record, numbered without a gap.
bool leadsToEnd(EvtRing& ring, const EvtState& state)
{
    quint32 offset = state.oldestOffset;
    quint32 number = state.oldestNumber;
    quint32 walked = 0;
    while (offset != state.endOffset) {
        offset = ring.recordPlace(offset);
        if (offset == state.endOffset)
            break;
        const auto record = ring.record(offset);
        if (!record || record->recordNumber() != number)
            return false;
        walked += record->length();
        if (walked > ring.capacity())
            return false;
        ++number;
        offset = ring.advance(offset, record->length());
    }
    return state.isEmpty() || number == state.nextNumber;
}

/// Every end record of the file that stands where it says it stands, youngest first. A kill amid an append
/// leaves two; remains of older ones may lie in overwritten ground.
std::vector<EvtState> findEndRecords(EvtRing& ring)
{
    constexpr std::size_t Kept = 8;
    std::vector<EvtState> found;
    const auto consider = [&](quint32 offset) {
        const auto state = ring.endRecord(offset);
        if (!state || state->endOffset != offset)
            return;
        found.push_back(*state);
        std::stable_sort(found.begin(), found.end(),
            [](const EvtState& a, const EvtState& b) { return a.nextNumber > b.nextNumber; });
        if (found.size() > Kept)
            found.pop_back();
    };
    for (quint32 offset = EvtRing::HeaderSize; offset + 4 <= ring.fileSize(); offset += 4) {
        const QByteArrayView word = ring.bytes(offset, 4);
        if (word.isEmpty())
            break;
        if (qFromLittleEndian<quint32>(word.data()) == EndMarks[0])
            consider(offset);
    }
    return found;
}

/// The state to go by where the header and the end record do not agree.
Result<EvtState> recoverState(EvtRing& ring, const EvtState& header)
{
    const std::vector<EvtState> found = findEndRecords(ring);
    // The end record itself may be damaged. Then the header counts, if it is no staler than what else there
    // is and the records vouch for it; an empty log has none that could.
    const bool youngest = found.empty() || found.front().nextNumber < header.nextNumber;
    if (youngest && ring.holds(header) && !header.isEmpty() && leadsToEnd(ring, header))
        return header;
    if (found.empty())
        return Error{error::EventLogFileCorrupt, QStringLiteral("the event log has no end record")};
    for (const EvtState& state : found) {
        if (leadsToEnd(ring, state))
            return state;
    }
    return found.front();
}

} // namespace

void EvtRing::setFileSize(quint32 size)
{
    m_fileSize = size;
    forget();
}

bool EvtRing::fill(quint32 offset, quint32 size)
{
    if (offset >= m_windowOffset
        && quint64(offset) + size <= quint64(m_windowOffset) + quint64(m_window.size()))
        return true;
    m_window.resize(qsizetype(std::max(size, std::min(WindowSize, m_fileSize - offset))));
    m_windowOffset = offset;
    const qint64 got = m_device->seek(offset) ? m_device->read(m_window.data(), m_window.size()) : -1;
    m_window.resize(qsizetype(std::max<qint64>(got, 0)));
    return m_window.size() >= qsizetype(size);
}

QByteArrayView EvtRing::bytes(quint32 offset, quint32 size)
{
    if (offset < HeaderSize || offset >= m_fileSize || size > capacity())
        return {};
    const quint32 room = m_fileSize - offset;
    if (size <= room)
        return fill(offset, size) ? QByteArrayView(m_window.data() + (offset - m_windowOffset), size)
                                  : QByteArrayView();
    m_joined.clear();
    for (const auto& [at, part] : {std::pair(offset, room), std::pair(HeaderSize, size - room)}) {
        if (!fill(at, part))
            return {};
        m_joined.append(m_window.constData() + (at - m_windowOffset), part);
    }
    return m_joined;
}

std::optional<quint32> EvtRing::wordAt(quint32 offset)
{
    std::array<char, 4> word{};
    if (offset >= m_windowOffset
        && quint64(offset) + word.size() <= quint64(m_windowOffset) + quint64(m_window.size()))
        std::copy_n(m_window.constData() + (offset - m_windowOffset), word.size(), word.begin());
    else if (!m_device->seek(offset) || m_device->read(word.data(), word.size()) != qint64(word.size()))
        return std::nullopt;
    return qFromLittleEndian<quint32>(word.data());
}

std::optional<EventRecordView> EvtRing::record(quint32 offset)
{
    const QByteArrayView start = bytes(offset, 8);
    if (start.isEmpty())
        return std::nullopt;
    const auto [length, signature] = words<2>(start);
    if (signature != EventRecordView::Signature || length < EventRecordView::FixedSize || length % 4 != 0
        || length > capacity())
        return std::nullopt;
    // A length that its end doesn't confirm must not cost the reading of so many bytes: in damaged ground
    // there can be one at every boundary.
    if (wordAt(advance(offset, length - 4)) != length)
        return std::nullopt;
    const auto record = EventRecordView::first(bytes(offset, length));
    return record && record->isClosed() ? record : std::nullopt;
}

std::optional<EvtState> EvtRing::endRecord(quint32 offset)
{
    const QByteArrayView found = bytes(offset, EndRecordSize);
    if (found.isEmpty())
        return std::nullopt;
    const auto values = words<10>(found);
    if (!std::equal(EndMarks.begin(), EndMarks.end(), values.begin()) || values[9] != EndRecordSize)
        return std::nullopt;
    EvtState state;
    state.oldestOffset = values[5];
    state.endOffset = values[6];
    state.nextNumber = values[7];
    state.oldestNumber = values[8];
    state.fileSize = m_fileSize;
    return holds(state) ? std::optional(state) : std::nullopt;
}

bool EvtRing::holds(const EvtState& state) const
{
    const auto inside
        = [this](quint32 offset) { return offset >= HeaderSize && offset < m_fileSize && offset % 4 == 0; };
    return inside(state.oldestOffset) && inside(state.endOffset);
}

quint32 EvtRing::advance(quint32 offset, quint32 size) const
{
    const quint32 room = m_fileSize - offset;
    return size < room ? offset + size : HeaderSize + (size - room);
}

quint32 EvtRing::recordPlace(quint32 offset) const
{
    return m_fileSize - offset < EventRecordView::FixedSize ? HeaderSize : offset;
}

Result<EvtState> readEvtState(QIODevice& device)
{
    const Error corrupt{error::EventLogFileCorrupt, QStringLiteral("not a classic event log")};
    // Everything in the ring keeps to boundaries of four bytes.
    const qint64 size = device.size() / 4 * 4;
    if (size < EvtRing::HeaderSize + EvtRing::EndRecordSize || size > std::numeric_limits<quint32>::max())
        return corrupt;
    const QByteArray bytes = device.seek(0) ? device.read(EvtRing::HeaderSize) : QByteArray();
    if (bytes.size() != EvtRing::HeaderSize)
        return corrupt;
    const auto header = words<12>(bytes);
    if (header[0] != EvtRing::HeaderSize || header[1] != EventRecordView::Signature)
        return corrupt;

    EvtRing ring(device, quint32(size));
    const EvtState stored{.oldestOffset = header[4],
        .endOffset = header[5],
        .nextNumber = header[6],
        .oldestNumber = header[7],
        .fileSize = quint32(size),
        .flags = header[9],
        .retention = header[10]};
    std::optional<EvtState> state;
    if ((stored.flags & EvtState::Dirty) == 0 && header[8] == size)
        state = ring.endRecord(stored.endOffset);
    if (!state || state->endOffset != stored.endOffset || state->oldestOffset != stored.oldestOffset) {
        Result<EvtState> recovered = recoverState(ring, stored);
        if (!recovered)
            return recovered;
        state = *recovered;
    }
    state->flags = stored.flags;
    state->retention = stored.retention;
    return *state;
}

QByteArray evtHeaderBytes(const EvtState& state)
{
    return wordBytes<12>({EvtRing::HeaderSize, EventRecordView::Signature, 1, 1, state.oldestOffset,
        state.endOffset, state.nextNumber, state.oldestNumber, state.fileSize, state.flags, state.retention,
        EvtRing::HeaderSize});
}

QByteArray evtEndRecordBytes(const EvtState& state)
{
    return wordBytes<10>({EndMarks[0], EndMarks[1], EndMarks[2], EndMarks[3], EndMarks[4], state.oldestOffset,
        state.endOffset, state.nextNumber, state.oldestNumber, EndMarks[0]});
}

} // namespace quoril
