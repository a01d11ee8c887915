#include "formats/evtx_reader.h"

#include <algorithm>
#include <utility>

namespace quoril {
namespace {

constexpr qint64 FileHeaderSize = 4096;

/// The chunks with a good magic, in the order of their records: a log of limited size goes on in its
/// oldest chunk.
std::vector<qint64> findChunks(QIODevice& device)
{
    constexpr qint64 Looked = 32;
    std::vector<std::pair<quint64, qint64>> found;
    const qint64 size = device.size();
    for (qint64 offset = FileHeaderSize; offset < size; offset += evtx::Chunk::Size) {
        const QByteArray head = device.seek(offset) ? device.read(Looked) : QByteArray();
        if (head.size() == Looked && evtx::Chunk::hasMagic(head))
            found.emplace_back(evtx::Chunk::firstRecord(head), offset);
    }
    std::sort(found.begin(), found.end());
    std::vector<qint64> offsets;
    offsets.reserve(found.size());
    for (const auto& [number, offset] : found)
        offsets.push_back(offset);
    return offsets;
}

} // namespace

Result<EvtxReader> EvtxReader::open(QIODevice& device)
{
    const QByteArray magic("ElfFile\0", 8);
    if (!device.seek(0) || device.read(magic.size()) != magic)
        return Error{error::EventLogFileCorrupt, QStringLiteral("not an event log")};
    return EvtxReader(device, findChunks(device));
}

EvtxReader::EvtxReader(QIODevice& device, std::vector<qint64> chunks)
    : m_device(&device)
    , m_chunks(std::move(chunks))
{
}

bool EvtxReader::next(EventEntry& entry)
{
    while (true) {
        if (m_chunk.next(m_span, entry))
            return true;
        if (m_chunk.isOverLimit() || !loadChunk())
            return false;
    }
}

bool EvtxReader::loadChunk()
{
    if (m_nextChunk >= m_chunks.size())
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
