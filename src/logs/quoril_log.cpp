#include "logs/quoril_log.h"

#include "logs/quoril_log_line.h"
#include "platform/files.h"
#include "platform/machine.h"

#include <QIODevice>

#include <algorithm>
#include <cstring>
#include <span>

namespace quoril {

namespace {

// A line is read in pieces of so many units; what is left of a longer one counts as the next line.
constexpr quint32 LongestLine = 1023;
// Large enough for reading at full speed, small enough for the cache.
constexpr quint32 BlockUnits = 128 * 1024;
static_assert(BlockUnits > LongestLine);
// The bytes of the file are taken as units of the machine.
static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN);

/// The end of the line that begins with `units`, behind its line end; 0 if there is none among them.
quint32 lineEnd(const uchar* units, quint32 size)
{
    const void* const end = std::memchr(units, '\n', size);
    return end ? quint32(static_cast<const uchar*>(end) - units) + 1 : 0;
}

quint32 lineEnd(const char16_t* units, quint32 size)
{
    const qsizetype end = QStringView(units, qsizetype(size)).indexOf(u'\n');
    return quint32(end + 1);
}

/// Takes the units to 8 bits; false if one of them needs more.
bool narrow(std::span<const char16_t> units, uchar* out)
{
    char16_t all = 0;
    for (std::size_t i = 0; i < units.size(); ++i) {
        all = char16_t(all | units[i]);
        out[i] = uchar(units[i]);
    }
    return all < 0x100;
}

} // namespace

void wMsg::Set(QStringView line)
{
    const QStringView kept = line.left(Capacity);
    const auto end
        = std::find_if(kept.begin(), kept.end(), [](QChar unit) { return unit == u'\r' || unit == u'\n'; });
    m_text = kept.left(end - kept.begin()).toString();
}

void QuorilLogMessage::AddLine(QStringView line)
{
    wMsg message;
    message.Set(line);
    m_lines.push_back(std::move(message));
}

/// Takes the text of a device into a log, block by block.
class QuorilLog::Reader
{
public:
    Reader(QuorilLog& log, QIODevice& device, Keep keep) : m_log(log), m_device(device), m_keep(keep) { }

    void run();

private:
    bool fill();
    template <typename Unit> quint32 split(Chunk& chunk, const Unit* units);
    void take(Chunk& chunk, quint32 begin, quint32 end);
    void beginMessage(Chunk& chunk, const LogLine& line);
    void dropEarlier(Chunk& chunk);

    QuorilLog& m_log;
    QIODevice& m_device;
    Keep m_keep;
    std::vector<char16_t> m_block = std::vector<char16_t>(BlockUnits);
    quint32 m_size = 0; ///< units in the block
    bool m_ended = false;
};

/// Reads until the block is full or the device has ended. An odd byte at the end is dropped.
bool QuorilLog::Reader::fill()
{
    qint64 bytes = qint64(m_size) * 2;
    constexpr qint64 Room = qint64(BlockUnits) * 2;
    char* const data = reinterpret_cast<char*>(m_block.data());
    while (bytes < Room && !m_ended) {
        const qint64 got = m_device.read(data + bytes, Room - bytes);
        m_ended = got <= 0;
        bytes += std::max<qint64>(got, 0);
    }
    m_size = quint32(bytes / 2);
    return m_size > 0;
}

void QuorilLog::Reader::run()
{
    while (fill()) {
        Chunk chunk;
        chunk.firstLine = m_log.m_lineCount;
        chunk.firstMessage = m_log.m_messageCount;
        chunk.size = m_size;
        chunk.bytes = std::make_unique_for_overwrite<uchar[]>(m_size);
        const std::span<const char16_t> units(m_block.data(), m_size);
        quint32 used = 0;
        if (narrow(units, chunk.bytes.get())) {
            used = split(chunk, chunk.bytes.get());
        } else {
            chunk.wide = true;
            chunk.bytes = std::make_unique_for_overwrite<uchar[]>(std::size_t(m_size) * 2);
            std::memcpy(chunk.bytes.get(), units.data(), units.size_bytes());
            used = split(chunk, units.data());
        }
        chunk.size = used;
        std::copy(m_block.begin() + used, m_block.begin() + m_size, m_block.begin());
        m_size -= used;
        if (chunk.lines.empty())
            continue;
        chunk.lines.shrink_to_fit();
        chunk.headers.shrink_to_fit();
        m_log.m_chunks.push_back(std::move(chunk));
    }
}

/// Takes the whole lines of the chunk, and all of it at the end of the file. The result is where the first
/// line begins that was not taken.
template <typename Unit> quint32 QuorilLog::Reader::split(Chunk& chunk, const Unit* units)
{
    quint32 begin = 0;
    while (begin < chunk.size) {
        const quint32 room = std::min(chunk.size - begin, LongestLine);
        quint32 length = lineEnd(units + begin, room);
        if (length == 0) {
            if (room < LongestLine && !m_ended)
                break;
            length = room;
        }
        take(chunk, begin, begin + length);
        begin += length;
    }
    return begin;
}

void QuorilLog::Reader::take(Chunk& chunk, quint32 begin, quint32 end)
{
    const LogLine line(
        chunk.bytes.get() + std::size_t(begin) * (chunk.wide ? 2 : 1), end - begin, chunk.wide);
    if (line.level() != 0)
        beginMessage(chunk, line);
    else if (m_log.m_messageCount == 0)
        return;
    chunk.lines.push_back(begin);
    ++m_log.m_lineCount;
}

void QuorilLog::Reader::beginMessage(Chunk& chunk, const LogLine& line)
{
    if (line.code() == StartMarkCode) {
        if (m_keep == Keep::FromLastStart)
            dropEarlier(chunk);
        m_log.m_last_message = qint32(m_log.m_messageCount);
    }
    chunk.headers.push_back(quint32(chunk.lines.size()));
    ++m_log.m_messageCount;
}

void QuorilLog::Reader::dropEarlier(Chunk& chunk)
{
    m_log.m_chunks.clear();
    m_log.m_messageCount = m_log.m_lineCount = 0;
    chunk.lines.clear();
    chunk.headers.clear();
    chunk.firstLine = chunk.firstMessage = 0;
}

qint32 QuorilLog::Load(QStringView path, Keep keep)
{
    m_last_message = 0;
    if (path.isEmpty())
        return 1;
    const auto file = machine().files().openForReading(path);
    if (!file)
        return 2;
    read(**file, keep);
    return 0;
}

void QuorilLog::read(QIODevice& device, Keep keep)
{
    m_last_message = 0;
    m_chunks.clear();
    m_messageCount = m_lineCount = 0;
    Reader(*this, device, keep).run();
}

LogLine QuorilLog::lineIn(const Chunk& chunk, std::size_t index) const
{
    const quint32 begin = chunk.lines[index];
    const quint32 end = index + 1 < chunk.lines.size() ? chunk.lines[index + 1] : chunk.size;
    return {chunk.bytes.get() + std::size_t(begin) * (chunk.wide ? 2 : 1), end - begin, chunk.wide};
}

const QuorilLog::Chunk& QuorilLog::chunkOfLine(qsizetype line) const
{
    const auto behind = std::upper_bound(m_chunks.begin(), m_chunks.end(), line,
        [](qsizetype wanted, const Chunk& chunk) { return wanted < chunk.firstLine; });
    return *std::prev(behind);
}

const QuorilLog::Chunk& QuorilLog::chunkOfMessage(qsizetype message) const
{
    // A chunk without headers has the first message of the chunk after it, so the last one of those is meant.
    const auto behind = std::upper_bound(m_chunks.begin(), m_chunks.end(), message,
        [](qsizetype wanted, const Chunk& chunk) { return wanted < chunk.firstMessage; });
    return *std::prev(behind);
}

LogLine QuorilLog::line(qsizetype number) const
{
    const Chunk& chunk = chunkOfLine(number);
    return lineIn(chunk, std::size_t(number - chunk.firstLine));
}

LogLine QuorilLog::headerOf(qsizetype message) const
{
    return line(firstLineOf(message));
}

qsizetype QuorilLog::firstLineOf(qsizetype message) const
{
    if (message == m_messageCount)
        return m_lineCount;
    const Chunk& chunk = chunkOfMessage(message);
    return chunk.firstLine + chunk.headers[std::size_t(message - chunk.firstMessage)];
}

qsizetype QuorilLog::messageOf(qsizetype line) const
{
    const Chunk& chunk = chunkOfLine(line);
    const auto behind
        = std::upper_bound(chunk.headers.begin(), chunk.headers.end(), quint32(line - chunk.firstLine));
    return chunk.firstMessage + (behind - chunk.headers.begin()) - 1;
}

QString QuorilLog::lineText(qsizetype number) const
{
    const bool header = firstLineOf(messageOf(number)) == number;
    return line(number).text(header ? log_column::Text : 0);
}

qint32 QuorilLog::levelOf(qsizetype message) const
{
    return headerOf(message).level();
}

std::array<qint32, 6> QuorilLog::timeOf(qsizetype message) const
{
    return headerOf(message).time();
}

QString QuorilLog::codeTextOf(qsizetype message) const
{
    return headerOf(message).codeText();
}

QuorilLogMessage QuorilLog::GetMessage(qsizetype index) const
{
    const LogLine header = headerOf(index);
    QuorilLogMessage message;
    message.m_level = header.level();
    message.dt_tm = header.time();
    message.m_code_text = header.codeText();
    message.m_code = header.code();
    for (qsizetype number = firstLineOf(index); number < firstLineOf(index + 1); ++number)
        message.AddLine(lineText(number));
    return message;
}

} // namespace quoril
