#include "logs/quoril_log.h"

#include "logs/log_line_scan.h"
#include "logs/log_runs.h"
#include "platform/files.h"
#include "platform/machine.h"

#include <QIODevice>

#include <algorithm>
#include <array>
#include <cstring>
#include <future>
#include <new>
#include <span>

namespace quoril {

namespace {

// Most text has no unit above 0xFF, so that what is kept of a block fills one large page. It is large enough,
// too, that the threads seldom wait for each other on a busy machine.
constexpr quint32 ParsedUnits = LargePage;
static_assert(ParsedUnits > LongestLine);
// One of them is being read while the others are parsed.
constexpr std::size_t BlocksAtOnce = 4;
// The bytes of the file are taken as units of the machine.
static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN);

/// What has to be known of a text before it is kept.
struct UnitRange
{
    bool wide = false; ///< a unit needs more than 8 bits
    bool zeros = false; ///< a unit is zero
};

/// Takes the units to 8 bits.
UnitRange narrow(std::span<const char16_t> units, uchar* out)
{
    char16_t all = 0;
    char16_t zeros = 0;
    for (std::size_t i = 0; i < units.size(); ++i) {
        all = char16_t(all | units[i]);
        zeros = char16_t(zeros | char16_t(units[i] == 0));
        out[i] = uchar(units[i]);
    }
    return {all >= 0x100, zeros != 0};
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

/// Takes the text of a device into a log. The blocks are cut between lines and so can be parsed at the same
/// time; they come into the log in the order of the file.
class QuorilLog::Reader
{
public:
    Reader(QuorilLog& log, QIODevice& device, LogRange range)
        : m_log(log)
        , m_device(device)
        , m_left(range.end - range.begin)
        , m_blockUnits(quint32(std::clamp<qint64>(m_left / 2, LongestLine + 1, ParsedUnits)))
    {
        m_ended = m_left == 0 || (!device.isSequential() && !device.seek(range.begin));
    }

    void run();

private:
    struct Block
    {
        char16_t* room(quint32 size);

        LargeBuffer units; ///< made when asked for: a small file needs one block
        std::future<Chunk> chunk; ///< valid while the units are in use
    };

    quint32 fill(char16_t* units, quint32 size);
    void finish(Block& block);
    void append(Chunk chunk);
    static Chunk parse(std::span<const char16_t> units);

    QuorilLog& m_log;
    QIODevice& m_device;
    qint64 m_left; ///< bytes
    quint32 m_blockUnits; ///< a small file needs no large block
    bool m_ended = false;
};

char16_t* QuorilLog::Reader::Block::room(quint32 size)
{
    if (!units)
        units = makeLargeBuffer(size * sizeof(char16_t));
    return reinterpret_cast<char16_t*>(units.get());
}

/// Reads on after the `size` units until the block is full or the device has ended. The result is the new
/// size; an odd byte at the end is dropped.
quint32 QuorilLog::Reader::fill(char16_t* units, quint32 size)
{
    qint64 bytes = qint64(size) * 2;
    const qint64 room = qint64(m_blockUnits) * 2;
    char* const data = reinterpret_cast<char*>(units);
    while (bytes < room && !m_ended) {
        const qint64 got = m_device.read(data + bytes, std::min(room - bytes, m_left));
        m_ended = got <= 0 || got == m_left;
        bytes += std::max<qint64>(got, 0);
        m_left -= std::max<qint64>(got, 0);
    }
    return quint32(bytes / 2);
}

void QuorilLog::Reader::run()
{
    std::array<Block, BlocksAtOnce> blocks;
    std::size_t current = 0;
    quint32 begun = 0; // units of a line that begins in this block and ends in a later one
    while (!m_ended) {
        Block& block = blocks[current];
        char16_t* const units = block.room(m_blockUnits);
        const quint32 size = fill(units, begun);
        const quint32 whole = m_ended ? size : quint32(wholeLogLines({units, size}));
        begun = size - whole;
        // The last block is parsed here, so that a small file needs no thread; nor may a thread that can't be
        // had stop the load.
        const auto where = m_ended ? std::launch::deferred : std::launch::async | std::launch::deferred;
        block.chunk = std::async(where, parse, std::span<const char16_t>(units, whole));

        current = (current + 1) % BlocksAtOnce;
        finish(blocks[current]);
        if (begun > 0)
            std::copy_n(units + whole, begun, blocks[current].room(m_blockUnits));
    }
    for (std::size_t i = 0; i < BlocksAtOnce; ++i)
        finish(blocks[(current + i) % BlocksAtOnce]);
}

/// Brings what was parsed of the block into the log.
void QuorilLog::Reader::finish(Block& block)
{
    if (block.chunk.valid())
        append(block.chunk.get());
}

/// Takes all units as lines.
QuorilLog::Chunk QuorilLog::Reader::parse(std::span<const char16_t> units)
{
    Chunk chunk;
    chunk.size = quint32(units.size());
    chunk.bytes = makeLargeBuffer(units.size());
    const UnitRange range = narrow(units, chunk.bytes.get());
    chunk.wide = range.wide;
    chunk.zeros = range.zeros;
    if (chunk.wide) {
        chunk.bytes = makeLargeBuffer(units.size_bytes());
        std::memcpy(chunk.bytes.get(), units.data(), units.size_bytes());
    }
    chunk.split(units);
    chunk.lines.shrink_to_fit();
    chunk.headers.shrink_to_fit();
    return chunk;
}

/// Adds the chunk after the others, without the lines that belong to no message.
void QuorilLog::Reader::append(Chunk chunk)
{
    if (m_log.m_messageCount == 0)
        chunk.dropOrphans();
    if (chunk.startMark >= 0)
        m_log.m_last_message = qint32(m_log.m_messageCount + chunk.startMark);
    if (chunk.lines.empty())
        return;
    chunk.firstLine = m_log.m_lineCount;
    chunk.firstMessage = m_log.m_messageCount;
    m_log.m_lineCount += qsizetype(chunk.lines.size());
    m_log.m_messageCount += qsizetype(chunk.headers.size());
    m_log.m_chunks.push_back(std::move(chunk));
}

void QuorilLog::Chunk::split(std::span<const char16_t> units)
{
    forEachLogLine(units, [&](std::span<const char16_t> line) {
        if (logLineLevel(line) != 0) {
            if (isStartMark(line))
                startMark = qsizetype(headers.size());
            headers.push_back(quint32(lines.size()));
        }
        lines.push_back(quint32(line.data() - units.data()));
    });
}

void QuorilLog::Chunk::dropOrphans()
{
    const quint32 dropped = headers.empty() ? quint32(lines.size()) : headers.front();
    lines.erase(lines.begin(), lines.begin() + dropped);
    for (quint32& line : headers)
        line -= dropped;
}

LogLine QuorilLog::Chunk::lineAt(quint32 begin, quint32 end) const
{
    LogLine line(bytes.get() + std::size_t(begin) * (wide ? 2 : 1), end - begin, wide);
    if (zeros)
        line.cutAtZero();
    return line;
}

qint32 QuorilLog::Load(QStringView path, Keep keep)
{
    return load(path, [&](QIODevice& device) { read(device, keep); });
}

qint32 QuorilLog::Load(QStringView path, const LogRange& range)
{
    return load(path, [&](QIODevice& device) {
        clear();
        Reader(*this, device, range).run();
    });
}

qint32 QuorilLog::load(QStringView path, const std::function<void(QIODevice&)>& takeIn)
{
    m_last_message = 0;
    if (path.isEmpty())
        return 1;
    const auto file = machine().files().openForReading(path);
    if (!file)
        return 2;
    try {
        takeIn(**file);
    } catch (const std::bad_alloc&) {
        // A part of a log would pass for all of it.
        clear();
        return 2;
    }
    return 0;
}

void QuorilLog::read(QIODevice& device, Keep keep)
{
    clear();
    const LogRange whole = wholeLog(device);
    if (keep == Keep::FromLastStart && !device.isSequential()) {
        if (const auto run = findRunFromEnd(device, whole, 0))
            Reader(*this, device, *run).run();
    }
    // What was cut or written anew in between is read as it is now.
    if (GetCount() == 0)
        Reader(*this, device, whole).run();
}

void QuorilLog::clear()
{
    m_chunks.clear();
    m_messageCount = m_lineCount = 0;
    m_last_message = 0;
}

const QuorilLog::Chunk& QuorilLog::chunkOfLine(qsizetype line) const
{
    const auto next = std::upper_bound(m_chunks.begin(), m_chunks.end(), line,
        [](qsizetype wanted, const Chunk& chunk) { return wanted < chunk.firstLine; });
    return *std::prev(next);
}

const QuorilLog::Chunk& QuorilLog::chunkOfMessage(qsizetype message) const
{
    // A chunk without headers has the first message of the chunk after it, so the last one of those is meant.
    const auto next = std::upper_bound(m_chunks.begin(), m_chunks.end(), message,
        [](qsizetype wanted, const Chunk& chunk) { return wanted < chunk.firstMessage; });
    return *std::prev(next);
}

LogLine QuorilLog::line(qsizetype number) const
{
    const Chunk& chunk = chunkOfLine(number);
    const auto begin = chunk.lines.begin() + (number - chunk.firstLine);
    return chunk.lineAt(*begin, std::next(begin) != chunk.lines.end() ? *std::next(begin) : chunk.size);
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
    const auto next
        = std::upper_bound(chunk.headers.begin(), chunk.headers.end(), quint32(line - chunk.firstLine));
    return chunk.firstMessage + (next - chunk.headers.begin()) - 1;
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
