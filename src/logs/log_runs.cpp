#include "logs/log_runs.h"

#include "logs/log_line_scan.h"
#include "platform/files.h"
#include "platform/machine.h"

#include <QIODevice>

#include <algorithm>
#include <limits>

namespace quoril {

namespace {

// Stays in the processor's own memory while it is searched.
constexpr std::size_t BlockUnits = std::size_t{128} * 1024;
static_assert(BlockUnits > LongestLine);
static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN);

/// Fills the units from a place of the device. False if it doesn't hold so many.
bool readAt(QIODevice& device, qint64 place, std::span<char16_t> units)
{
    if (!device.seek(place))
        return false;
    const qint64 bytes = qint64(units.size_bytes());
    char* const data = reinterpret_cast<char*>(units.data());
    for (qint64 done = 0; done < bytes;) {
        const qint64 got = device.read(data + done, bytes - done);
        if (got <= 0)
            return false;
        done += got;
    }
    return true;
}

/// The places of header lines, in bytes.
struct Headers
{
    /// Takes those among the lines, which begin at a place after all that were taken.
    void take(std::span<const char16_t> lines, qint64 place);

    std::vector<qint64> startMarks;
    std::optional<qint64> first;
    qint64 last = 0; ///< where there is a first
};

void Headers::take(std::span<const char16_t> lines, qint64 place)
{
    forEachLogLine(lines, [&](std::span<const char16_t> line) {
        if (logLineLevel(line) == 0)
            return;
        const qint64 here = place + (line.data() - lines.data()) * 2;
        if (!first)
            first = here;
        last = here;
        if (isStartMark(line))
            startMarks.push_back(here);
    });
}

/// Looks for start marks from the end of a range towards its beginning.
class StartFinder
{
public:
    StartFinder(QIODevice& device, LogRange range) : m_device(device), m_range(range), m_units(BlockUnits) { }

    /// Goes on until so many are found or the range is through. False if it can't be read.
    bool find(std::size_t count);
    /// Goes on until a header is found or the range is through. False if it can't be read.
    bool findHeader();

    std::vector<qint64> startMarks; ///< the last one first
    std::optional<qint64> firstHeader; ///< of what was searched
    std::optional<qint64> lastHeader; ///< of the range

private:
    bool searchBlock();
    void add(const Headers& earlier);
    std::optional<qint64> lineBeginBefore(qint64 place);

    QIODevice& m_device;
    LogRange m_range; ///< what is not searched yet
    std::vector<char16_t> m_units;
};

bool StartFinder::find(std::size_t count)
{
    bool isRead = true;
    while (isRead && m_range.end > m_range.begin && startMarks.size() < count)
        isRead = searchBlock();
    return isRead;
}

bool StartFinder::findHeader()
{
    bool isRead = true;
    while (isRead && m_range.end > m_range.begin && !lastHeader)
        isRead = searchBlock();
    return isRead;
}

/// Searches the last lines of the range and takes them off it.
bool StartFinder::searchBlock()
{
    const qint64 begin = std::max(m_range.begin, m_range.end - qint64(BlockUnits * 2));
    const std::span<char16_t> block(m_units.data(), std::size_t(m_range.end - begin) / 2);
    if (!readAt(m_device, begin, block))
        return false;
    // What stands before the block's first line end may be the rest of a line.
    std::size_t rest = 0;
    if (begin > m_range.begin)
        rest = std::size_t(std::find(block.begin(), block.end(), u'\n') - block.begin()) + 1;
    Headers headers;
    if (rest < block.size()) {
        m_range.end = begin + qint64(rest) * 2;
        headers.take(block.subspan(rest), m_range.end);
    } else {
        // A line of more than a block is cut into its pieces from its beginning on.
        const auto lineBegin = lineBeginBefore(begin);
        if (!lineBegin)
            return false;
        LogBlocks pieces(m_device, {*lineBegin, m_range.end});
        for (auto lines = pieces.next(); !lines.empty(); lines = pieces.next())
            headers.take(lines, pieces.position());
        m_range.end = *lineBegin;
    }
    add(headers);
    return true;
}

void StartFinder::add(const Headers& earlier)
{
    startMarks.insert(startMarks.end(), earlier.startMarks.rbegin(), earlier.startMarks.rend());
    if (earlier.first && !lastHeader)
        lastHeader = earlier.last;
    if (earlier.first)
        firstHeader = earlier.first;
}

/// Where the line begins that goes on at a place.
std::optional<qint64> StartFinder::lineBeginBefore(qint64 place)
{
    while (place > m_range.begin) {
        const qint64 begin = std::max(m_range.begin, place - qint64(BlockUnits * 2));
        const std::span<char16_t> block(m_units.data(), std::size_t(place - begin) / 2);
        if (!readAt(m_device, begin, block))
            return std::nullopt;
        const auto rest = std::find(block.rbegin(), block.rend(), u'\n').base();
        if (rest != block.begin())
            return begin + (rest - block.begin()) * 2;
        place = begin;
    }
    return place;
}

/// Gathers runs from blocks of lines.
class RunLister
{
public:
    void take(std::span<const char16_t> lines, qint64 place);

    std::vector<LogRun> runs;

private:
    void takeHeader(std::span<const char16_t> line, qint32 level, qint64 place);
    void takeLastTime();

    std::span<const char16_t> m_lastHeader; ///< in the block that is being taken
};

void RunLister::take(std::span<const char16_t> lines, qint64 place)
{
    forEachLogLine(lines, [&](std::span<const char16_t> line) {
        if (const qint32 level = logLineLevel(line); level != 0)
            takeHeader(line, level, place + (line.data() - lines.data()) * 2);
        if (!runs.empty())
            ++runs.back().counts.lines;
    });
    takeLastTime();
    if (!runs.empty())
        runs.back().range.end = place + qint64(lines.size_bytes());
}

void RunLister::takeHeader(std::span<const char16_t> line, qint32 level, qint64 place)
{
    if (runs.empty() || isStartMark(line)) {
        takeLastTime();
        if (!runs.empty())
            runs.back().range.end = place;
        runs.emplace_back().range.begin = place;
        runs.back().firstTime = log_scan::asLine(line).time();
    }
    ++runs.back().counts.messages;
    ++runs.back().counts.levels[std::size_t(level)];
    m_lastHeader = line;
}

void RunLister::takeLastTime()
{
    if (!m_lastHeader.empty())
        runs.back().lastTime = log_scan::asLine(m_lastHeader).time();
    m_lastHeader = {};
}

} // namespace

LogBlocks::LogBlocks(QIODevice& device, LogRange range)
    : m_device(device)
    , m_left(range.end - range.begin)
    , m_position(range.begin)
    , m_units(BlockUnits)
{
    if (!device.isSequential() && !device.seek(range.begin))
        m_left = 0;
}

std::span<const char16_t> LogBlocks::next()
{
    std::copy(
        m_units.begin() + std::ptrdiff_t(m_given), m_units.begin() + std::ptrdiff_t(m_size), m_units.begin());
    m_position += qint64(m_given) * 2;
    char* const data = reinterpret_cast<char*>(m_units.data());
    qint64 bytes = qint64(m_size - m_given) * 2;
    constexpr qint64 Room = qint64(BlockUnits) * 2;
    while (bytes < Room && m_left > 0) {
        const qint64 got = m_device.read(data + bytes, std::min(Room - bytes, m_left));
        m_left -= got > 0 ? got : m_left;
        bytes += std::max<qint64>(got, 0);
    }
    m_size = std::size_t(bytes / 2);
    m_given = m_left > 0 ? wholeLogLines({m_units.data(), m_size}) : m_size;
    return {m_units.data(), m_given};
}

LogRange wholeLog(const QIODevice& device)
{
    const qint64 begin = device.isSequential() ? 0 : device.pos();
    const qint64 bytes = bytesToRead(device);
    return {begin, bytes > std::numeric_limits<qint64>::max() - begin ? bytes : begin + bytes / 2 * 2};
}

LogCounts countLog(QIODevice& device, LogRange range)
{
    LogCounts counts;
    LogBlocks blocks(device, range);
    for (auto lines = blocks.next(); !lines.empty(); lines = blocks.next()) {
        forEachLogLine(lines, [&counts](std::span<const char16_t> line) {
            const qint32 level = logLineLevel(line);
            counts.messages += level != 0;
            counts.levels[std::size_t(level)] += level != 0;
            counts.lines += counts.messages != 0;
        });
    }
    return counts;
}

std::vector<LogRun> listRuns(QIODevice& device, LogRange range)
{
    RunLister lister;
    LogBlocks blocks(device, range);
    for (auto lines = blocks.next(); !lines.empty(); lines = blocks.next())
        lister.take(lines, blocks.position());
    return std::move(lister.runs);
}

std::optional<LogRange> findRunFromEnd(QIODevice& device, LogRange range, qsizetype runsBefore)
{
    if (range.end > device.size())
        return std::nullopt;
    StartFinder finder(device, range);
    const auto before = std::size_t(runsBefore);
    if (!finder.find(before + 1))
        return std::nullopt;
    const std::vector<qint64>& marks = finder.startMarks;
    const qint64 end = before == 0 || marks.size() < before ? range.end : marks[before - 1];
    if (marks.size() > before)
        return LogRange{marks[before], end};
    // What stands before the first mark.
    if (marks.size() == before && finder.firstHeader && *finder.firstHeader < end)
        return LogRange{*finder.firstHeader, end};
    return std::nullopt;
}

std::optional<LogHeader> firstHeaderOf(QIODevice& device, LogRange range)
{
    std::optional<LogHeader> header;
    LogBlocks blocks(device, range);
    for (auto lines = blocks.next(); !lines.empty() && !header; lines = blocks.next()) {
        forEachLogLine(lines, [&header](std::span<const char16_t> units) {
            const qint32 level = header ? 0 : logLineLevel(units);
            const LogLine line = log_scan::asLine(level == 0 ? units.first(0) : units);
            if (level != 0)
                header = {level, line.time(), line.codeText()};
        });
    }
    return header;
}

std::optional<LogHeader> lastHeaderOf(QIODevice& device, LogRange range)
{
    StartFinder finder(device, range);
    if (!finder.findHeader() || !finder.lastHeader)
        return std::nullopt;
    return firstHeaderOf(device, {*finder.lastHeader, range.end});
}

LogRange wholeLinesOf(QIODevice& device, LogRange range)
{
    std::vector<char16_t> block(BlockUnits);
    for (qint64 end = range.end; end > range.begin;) {
        const qint64 begin = std::max(range.begin, end - qint64(BlockUnits * 2));
        const std::span<char16_t> units(block.data(), std::size_t(end - begin) / 2);
        if (!readAt(device, begin, units))
            break;
        const auto rest = std::find(units.rbegin(), units.rend(), u'\n').base();
        if (rest != units.begin())
            return {range.begin, begin + (rest - units.begin()) * 2};
        end = begin;
    }
    return {range.begin, range.begin};
}

std::optional<LogRun> lastRunOf(QStringView path)
{
    if (path.isEmpty())
        return std::nullopt;
    const auto file = machine().files().openForReading(path);
    if (!file)
        return std::nullopt;
    const auto range = findRunFromEnd(**file, wholeLog(**file), 0);
    std::vector<LogRun> runs = range ? listRuns(**file, *range) : std::vector<LogRun>();
    return runs.empty() ? std::nullopt : std::optional(runs.back());
}

} // namespace quoril
