#pragma once

#include "logs/quoril_log_line.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>
#include <span>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace quoril {

// The lines of the emulator's log in 16-bit units, found and distinguished about as fast as they can be
// copied.

/// A line is read in pieces of so many units; what is left of a longer one counts as the next line.
inline constexpr std::size_t LongestLine = 1023;

namespace log_scan {

/// So many units are searched for line ends together.
inline constexpr std::size_t Group = 64;

#ifdef __SSE2__

inline __m128i eight(const char16_t* units)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(units));
}

/// A bit for each unit of a group that is a line feed.
inline quint64 lineFeeds(const char16_t* units)
{
    const __m128i feed = _mm_set1_epi16(u'\n');
    quint64 bits = 0;
    for (std::size_t i = 0; i < Group; i += 16) {
        const __m128i first = _mm_cmpeq_epi16(eight(units + i), feed);
        const __m128i second = _mm_cmpeq_epi16(eight(units + i + 8), feed);
        bits |= quint64(quint32(_mm_movemask_epi8(_mm_packs_epi16(first, second)))) << i;
    }
    return bits;
}

/// Whether nothing in front of a line's tag can make it another line than a header: no zero unit and no colon
/// but the one between date and time.
inline bool isPlainBeforeTag(const char16_t* line)
{
    constexpr int Separator = 8;
    const __m128i left = eight(line);
    const __m128i right = eight(line + log_column::Tag - 8);
    const __m128i zero = _mm_setzero_si128();
    const __m128i colon = _mm_set1_epi16(u':');
    const __m128i zeros = _mm_or_si128(_mm_cmpeq_epi16(left, zero), _mm_cmpeq_epi16(right, zero));
    const int leftColons = _mm_movemask_epi8(_mm_cmpeq_epi16(left, colon));
    const int rightColons = _mm_movemask_epi8(_mm_cmpeq_epi16(right, colon));
    const bool beginsTag = line[Separator + 1] > u'9';
    const int allowed = beginsTag ? 0 : 0b11 << 2 * (Separator - int(log_column::Tag - 8));
    return (_mm_movemask_epi8(zeros) | leftColons | (rightColons & ~allowed)) == 0;
}

#else

inline quint64 lineFeeds(const char16_t* units)
{
    quint64 bits = 0;
    for (std::size_t i = 0; i < Group; ++i)
        bits |= quint64(units[i] == u'\n') << i;
    return bits;
}

inline bool isPlainBeforeTag(const char16_t*)
{
    return false;
}

#endif

inline LogLine asLine(std::span<const char16_t> line)
{
    LogLine whole(reinterpret_cast<const uchar*>(line.data()), quint32(line.size()), true);
    whole.cutAtZero();
    return whole;
}

inline bool hasTag(const char16_t* line, const char16_t* tag)
{
    return std::memcmp(line + log_column::Tag, tag, (log_column::TagEnd - log_column::Tag) * 2) == 0;
}

} // namespace log_scan

/// Calls `visit(std::span<const char16_t>)` for each line of the units, its line end included; they begin
/// with a line, and what follows the last line end is a line as well.
template <typename Visit> void forEachLogLine(std::span<const char16_t> units, Visit&& visit)
{
    std::size_t begin = 0;
    const auto take = [&](std::size_t end) {
        for (; end - begin > LongestLine; begin += LongestLine)
            visit(units.subspan(begin, LongestLine));
        visit(units.subspan(begin, end - begin));
        begin = end;
    };
    std::size_t group = 0;
    for (; group + log_scan::Group <= units.size(); group += log_scan::Group) {
        for (quint64 feeds = log_scan::lineFeeds(units.data() + group); feeds != 0; feeds &= feeds - 1)
            take(group + std::size_t(std::countr_zero(feeds)) + 1);
    }
    for (; group < units.size(); ++group) {
        if (units[group] == u'\n')
            take(group + 1);
    }
    if (begin < units.size())
        take(units.size());
}

/// How many of the units make whole lines, if more units follow. A line begins with the first of them.
inline std::size_t wholeLogLines(std::span<const char16_t> units)
{
    const auto rest = std::find(units.rbegin(), units.rend(), u'\n').base();
    const auto last = std::size_t(rest - units.begin());
    return last + (units.size() - last) / LongestLine * LongestLine;
}

/// The same as LogLine::level().
inline qint32 logLineLevel(std::span<const char16_t> line)
{
    if (line.size() < log_column::TagEnd || line[log_column::Tag] != u':')
        return 0;
    const char16_t* const units = line.data();
    const qint32 level = log_scan::hasTag(units, u":INFO :") ? 1
        : log_scan::hasTag(units, u":WARN :")                ? 2
        : log_scan::hasTag(units, u":ERROR:")                ? 3
                                                             : 0;
    return level == 0 || log_scan::isPlainBeforeTag(units) ? level : log_scan::asLine(line).level();
}

/// Whether a header line has the code with which a run begins.
inline bool isStartMark(std::span<const char16_t> header)
{
    // Nearly all codes differ from it in these digits already.
    const std::size_t end = std::min<std::size_t>(header.size(), log_column::CodeEnd);
    std::size_t column = log_column::Code;
    while (column < end && header[column] == u'0')
        ++column;
    static_assert(StartMarkCode == 0x249);
    return column + 3 <= end && header[column] == u'2' && header[column + 1] == u'4'
        && header[column + 2] == u'9' && log_scan::asLine(header).code() == StartMarkCode;
}

} // namespace quoril
