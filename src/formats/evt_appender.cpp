#include "formats/evt_appender.h"

#include <QFileDevice>
#include <QtEndian>

#include <algorithm>

namespace quoril {
namespace {

constexpr quint32 RecordNumberOffset = 8;
constexpr qsizetype RecordMarkSize = 8;

Error writeFault(const QIODevice& device)
{
    return {error::WriteFault, device.errorString()};
}

Status createLog(QIODevice& device)
{
    EvtState state;
    state.fileSize = EvtAppender::Granularity;
    QByteArray bytes = evtHeaderBytes(state) + evtEndRecordBytes(state);
    bytes.append(qsizetype(state.fileSize) - bytes.size(), '\0');
    if (!device.seek(0) || device.write(bytes) != bytes.size())
        return writeFault(device);
    return {};
}

} // namespace

Result<EvtAppender> EvtAppender::open(QIODevice& device, quint32 maximumSize)
{
    if (device.size() == 0) {
        if (const Status created = createLog(device); !created)
            return created.failure();
    }
    const Result<EvtState> state = readEvtState(device);
    if (!state)
        return state.failure();
    return EvtAppender(device, *state, maximumSize);
}

EvtAppender::EvtAppender(QIODevice& device, const EvtState& state, quint32 maximumSize)
    : m_device(&device)
    , m_ring(device, state.fileSize)
    , m_state(state)
    , m_maximumSize(std::max(maximumSize / Granularity * Granularity, state.fileSize))
{
}

Status EvtAppender::append(const EventEntry& entry)
{
    QByteArray record;
    appendEventLogRecord(record, entry);
    return appendRecord(std::move(record));
}

Status EvtAppender::appendRecord(QByteArray record)
{
    const auto view = EventRecordView::first(record);
    const quint32 length = quint32(record.size());
    constexpr quint32 Overhead = EvtRing::HeaderSize + EvtRing::EndRecordSize + EventRecordView::FixedSize;
    if (!view || view->length() != length || !view->isClosed() || length % 4 != 0)
        return Error{error::InvalidParameter, QStringLiteral("not a whole event record")};
    // A wrapped log no longer grows: its records go around at the seam.
    const bool growing
        = (m_state.flags & EvtState::Wrapped) == 0 && m_state.oldestOffset <= m_state.endOffset;
    if (quint64(length) + Overhead > (growing ? m_maximumSize : m_state.fileSize))
        return Error{error::InvalidParameter, QStringLiteral("the event does not fit into the log")};
    qToLittleEndian(m_state.nextNumber, record.data() + RecordNumberOffset);

    if (const Status marked = markDirty(); !marked)
        return marked;
    if (growing) {
        if (const Status grown = grow(length + EvtRing::EndRecordSize); !grown)
            return grown;
    }
    const quint32 oldEnd = m_state.endOffset;
    const quint32 start = m_ring.recordPlace(oldEnd);
    const quint32 filler = m_ring.distance(oldEnd, start);
    if (const Status room = makeRoom(filler + length + EvtRing::EndRecordSize); !room)
        return room;

    EvtState next = m_state;
    next.endOffset = m_ring.advance(start, length);
    ++next.nextNumber;
    if (m_state.isEmpty()) {
        next.oldestOffset = start;
        next.oldestNumber = m_state.nextNumber;
    }
    if (next.endOffset < oldEnd || next.endOffset + EvtRing::EndRecordSize > next.fileSize)
        next.flags |= EvtState::Wrapped;

    // What covers the old end record comes last, for then the new end record is in force.
    if (const Status ended = writeAround(next.endOffset, evtEndRecordBytes(next)); !ended)
        return ended;
    const quint32 head = filler > 0 ? 0 : EvtRing::EndRecordSize;
    const QByteArrayView tail = QByteArrayView(record).sliced(head);
    if (const Status written = writeAround(m_ring.advance(start, head), tail); !written)
        return written;
    QByteArray last = record.first(head);
    for (quint32 i = 0; i < filler; i += 4)
        last.append("\x27\0\0\0", std::min<qsizetype>(4, filler - i));
    // Without its length and signature a record is none: half of what follows them is never read.
    const qsizetype mark = std::min<qsizetype>(head, RecordMarkSize);
    if (const Status body = writeAround(m_ring.advance(oldEnd, quint32(mark)), last.sliced(mark)); !body)
        return body;
    if (const Status committed = writeAround(oldEnd, last.first(mark)); !committed)
        return committed;
    m_state = next;
    return flush();
}

Status EvtAppender::finish()
{
    if (!m_dirty)
        return {};
    m_state.flags &= ~EvtState::Dirty;
    if (const Status written = write(0, evtHeaderBytes(m_state)); !written)
        return written;
    m_dirty = false;
    return flush();
}

Status EvtAppender::markDirty()
{
    if (m_dirty)
        return {};
    m_state.flags |= EvtState::Dirty;
    if (const Status written = write(0, evtHeaderBytes(m_state)); !written)
        return written;
    m_dirty = true;
    return flush();
}

Status EvtAppender::grow(quint32 needed)
{
    quint32 size = m_state.fileSize;
    while (size < m_maximumSize && size - m_state.endOffset < needed)
        size += std::min(Granularity, m_maximumSize - size);
    if (size == m_state.fileSize)
        return {};
    if (const Status extended = write(size - 1, QByteArrayView("\0", 1)); !extended)
        return extended;
    m_ring.setFileSize(size);
    m_state.fileSize = size;
    return {};
}

Status EvtAppender::makeRoom(quint32 needed)
{
    bool dropped = false;
    while (!m_state.isEmpty()
        && m_ring.distance(m_state.oldestOffset, m_state.endOffset) + needed > m_ring.capacity()) {
        dropOldest();
        dropped = true;
    }
    return dropped ? writeAround(m_state.endOffset, evtEndRecordBytes(m_state)) : Status();
}

void EvtAppender::dropOldest()
{
    quint32 left = m_ring.distance(m_state.oldestOffset, m_state.endOffset);
    quint32 offset = m_state.oldestOffset;
    const auto pass = [&](quint32 size) {
        size = std::min(size, left);
        offset = m_ring.advance(offset, size);
        left -= size;
        const quint32 place = m_ring.recordPlace(offset);
        const quint32 filler = std::min(left, m_ring.distance(offset, place));
        offset = filler > 0 ? place : offset;
        left -= filler;
    };
    const auto oldest = m_ring.record(offset);
    pass(oldest ? oldest->length() : 4);
    auto next = m_ring.record(offset);
    while (left > 0 && !next) {
        pass(4);
        next = m_ring.record(offset);
    }
    m_state.oldestOffset = left > 0 ? offset : m_state.endOffset;
    m_state.oldestNumber = left > 0 ? next->recordNumber() : m_state.nextNumber;
}

Status EvtAppender::write(quint32 offset, QByteArrayView bytes)
{
    m_ring.forget();
    if (!m_device->seek(offset) || m_device->write(bytes.data(), bytes.size()) != bytes.size())
        return writeFault(*m_device);
    return {};
}

Status EvtAppender::writeAround(quint32 offset, QByteArrayView bytes)
{
    const qsizetype room = std::min<qsizetype>(bytes.size(), m_state.fileSize - offset);
    if (const Status written = write(offset, bytes.first(room)); !written || room == bytes.size())
        return written;
    return write(EvtRing::HeaderSize, bytes.sliced(room));
}

Status EvtAppender::flush()
{
    auto* file = qobject_cast<QFileDevice*>(m_device);
    if (file != nullptr && !file->flush())
        return writeFault(*m_device);
    return {};
}

} // namespace quoril
