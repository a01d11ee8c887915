#include "logs/log_follower.h"

#include "logs/log_line_scan.h"
#include "platform/files.h"
#include "platform/machine.h"

#include <algorithm>

namespace quoril {

namespace {

// Holds several lines with their times.
constexpr qint64 BeforeBytes = 2048;

QByteArray bytesAt(QIODevice& device, qint64 place, qint64 size)
{
    return device.seek(place) ? device.read(size) : QByteArray();
}

} // namespace

LogFollower::LogFollower(QString path, std::optional<LogRange> read) : m_path(std::move(path))
{
    auto file = machine().files().openForReading(m_path);
    if (!file || !read)
        return;
    m_device = *std::move(file);
    m_position = read->end;
    const qint64 before = std::min(BeforeBytes, m_position);
    m_before = bytesAt(*m_device, m_position - before, before);
    m_message = lastHeaderOf(*m_device, *read).value_or(LogHeader());
}

/// Whether what was read so far is still there.
bool LogFollower::continues(QIODevice& device) const
{
    return device.size() >= m_position
        && bytesAt(device, m_position - m_before.size(), m_before.size()) == m_before;
}

void LogFollower::poll(const Visit& visit)
{
    auto present = machine().files().openForReading(m_path);
    if (present && continues(**present)) {
        m_device = *std::move(present);
        take(*m_device, Rest::Wait, visit);
        return;
    }
    // It was cut, written anew or renamed; a renamed or removed one may have got lines before that.
    if (m_device && continues(*m_device))
        take(*m_device, present ? Rest::Take : Rest::Wait, visit);
    if (!present)
        return;
    m_device = *std::move(present);
    m_position = m_rest = 0;
    m_before.clear();
    m_message = {};
    take(*m_device, Rest::Wait, visit);
}

/// Takes what is there after the position.
void LogFollower::take(QIODevice& device, Rest rest, const Visit& visit)
{
    const qint64 end = device.size() / 2 * 2;
    LogBlocks blocks(device, {m_position, std::max(end, m_position)});
    for (auto lines = blocks.next(); !lines.empty(); lines = blocks.next()) {
        const auto whole = wholeLogLines(lines);
        const qint64 left = qint64(lines.size() - whole) * 2;
        const bool isTaken = rest == Rest::Take || left == m_rest;
        const auto taken = isTaken ? lines : lines.first(whole);
        m_rest = isTaken ? 0 : left;
        takeLines(taken, visit);
        m_position = blocks.position() + qint64(taken.size_bytes());
        m_before.append(reinterpret_cast<const char*>(taken.data()), qsizetype(taken.size_bytes()));
        m_before = m_before.right(BeforeBytes);
    }
}

void LogFollower::takeLines(std::span<const char16_t> lines, const Visit& visit)
{
    forEachLogLine(lines, [&](std::span<const char16_t> units) {
        const LogLine line = log_scan::asLine(units);
        const qint32 level = line.level();
        if (level != 0)
            m_message = {level, line.time(), line.codeText()};
        if (m_message.level != 0)
            visit(m_message, line.text(level != 0 ? log_column::Text : 0));
    });
}

} // namespace quoril
