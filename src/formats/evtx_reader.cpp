#include "formats/evtx_reader.h"

#include <algorithm>
#include <utility>

namespace quoril {
namespace {

constexpr qint64 FileHeaderSize = 4096;

} // namespace

Result<EvtxReader> EvtxReader::open(QIODevice& device)
{
    constexpr qsizetype FlagsOffset = 120;
    constexpr quint8 DirtyFlag = 1;
    const QByteArray magic("ElfFile\0", 8);
    const QByteArray head = device.seek(0) ? device.read(FlagsOffset + 1) : QByteArray();
    if (!head.startsWith(magic))
        return Error{error::EventLogFileCorrupt, QStringLiteral("not an event log")};
    EvtxReader reader(device);
    reader.m_isDirty = head.size() > FlagsOffset && (quint8(head[FlagsOffset]) & DirtyFlag) != 0;
    reader.findChunks();
    return reader;
}

/// The chunks with a good magic, in the order of their records: a log of limited size goes on in its oldest
/// chunk.
void EvtxReader::findChunks()
{
    constexpr qint64 Looked = 32;
    std::vector<std::pair<quint64, qint64>> found;
    const qint64 size = m_device->size();
    for (qint64 offset = FileHeaderSize; offset < size; offset += evtx::Chunk::Size) {
        const QByteArray head = m_device->seek(offset) ? m_device->read(Looked) : QByteArray();
        if (head.size() == Looked && evtx::Chunk::hasMagic(head))
            found.emplace_back(evtx::Chunk::firstRecord(head), offset);
        else
            lookAtNoChunk(offset);
    }
    std::sort(found.begin(), found.end());
    m_chunks.reserve(found.size());
    for (const auto& [number, offset] : found)
        m_chunks.push_back(offset);
}

/// A log has room for chunks to come, which holds zeros; anything else was a chunk.
void EvtxReader::lookAtNoChunk(qint64 offset)
{
    const QByteArray bytes = m_device->seek(offset) ? m_device->read(evtx::Chunk::Size) : QByteArray();
    if (bytes.count('\0') == bytes.size())
        return;
    ++m_damage.chunks;
    m_damage.add(offset, evtx::Chunk::strayRecords(bytes));
}

void EvtxReader::takeDamage()
{
    const EventDamage& damage = m_chunk.damage();
    if (damage.firstOffset >= 0)
        m_damage.add(m_chunks[m_nextChunk - 1] + damage.firstOffset, damage.records);
}

bool EvtxReader::next(EventEntry& entry)
{
    while (true) {
        if (m_chunk.next(m_span, entry))
            return true;
        if (std::exchange(m_hasChunk, false))
            takeDamage();
        if (m_chunk.isOverLimit() || !loadChunk())
            return false;
    }
}

bool EvtxReader::loadChunk()
{
    m_hasChunk = m_nextChunk < m_chunks.size();
    if (!m_hasChunk)
        return false;
    QByteArray& bytes = m_chunk.bytes();
    bytes.resize(evtx::Chunk::Size);
    const qint64 got
        = m_device->seek(m_chunks[m_nextChunk++]) ? m_device->read(bytes.data(), bytes.size()) : 0;
    bytes.resize(qsizetype(std::max<qint64>(got, 0)));
    m_chunk.begin();
    return true;
}

} // namespace quoril
