#pragma once

#include <QString>
#include <QStringView>

#include <array>
#include <optional>
#include <span>
#include <vector>

class QIODevice;

namespace quoril {

/// A piece of a log file, in bytes from its beginning. It begins with a line and holds whole units.
struct LogRange
{
    qint64 begin = 0;
    qint64 end = 0;

    friend bool operator==(const LogRange&, const LogRange&) = default;
};

/// Reads a range of a device in blocks of whole lines and keeps no more than one of them. A device that ends
/// earlier, or fails, ends the range.
class LogBlocks
{
public:
    /// The device outlives the reader; one that knows no positions is read from where it stands.
    LogBlocks(QIODevice& device, LogRange range);

    /// The next lines, valid until the next call; none at the end. A line that is longer than a block comes
    /// in the pieces in which lines are read.
    std::span<const char16_t> next();
    /// Where the lines that next() gave begin in the device.
    qint64 position() const { return m_position; }

private:
    QIODevice& m_device;
    qint64 m_left; ///< bytes that are not read yet
    qint64 m_position = 0;
    std::vector<char16_t> m_units;
    std::size_t m_size = 0; ///< units in the block
    std::size_t m_given = 0; ///< how many of them next() gave
};

/// What is counted of a series of messages.
struct LogCounts
{
    qint64 messages = 0;
    qint64 lines = 0; ///< text lines, those of the headers among them
    std::array<qint64, 4> levels{}; ///< messages by level, 1 to 3
};

/// A run of the emulator: the messages from one start mark up to the next. What a log holds before its first
/// mark counts as a run, too, whose beginning is no longer there.
struct LogRun
{
    LogRange range; ///< from its first header line on
    LogCounts counts;
    /// Of the first and the last message, as QuorilLogMessage::dt_tm.
    std::array<qint32, 6> firstTime{};
    std::array<qint32, 6> lastTime{};
};

/// All of a device that is there now. One that knows no positions is read until it ends.
LogRange wholeLog(const QIODevice& device);

/// Counts the messages of a range; lines before the first message belong to none.
LogCounts countLog(QIODevice& device, LogRange range);

/// The runs of a range in the order of the file.
std::vector<LogRun> listRuns(QIODevice& device, LogRange range);

/// Looks for a run from the end of the range: 0 for the last one, 1 for the one before. None if there are not
/// so many. Of the range no more is read than the run and what comes after it, and of that little is kept.
/// The device knows positions.
std::optional<LogRange> findRunFromEnd(QIODevice& device, LogRange range, qsizetype runsBefore);

/// A header line of a log, apart from its file.
struct LogHeader
{
    qint32 level = 0; ///< 1 to 3
    std::array<qint32, 6> time{};
    QString codeText;
};
/// The first and the last of a range that begins with a line. None without one.
std::optional<LogHeader> firstHeaderOf(QIODevice& device, LogRange range);
std::optional<LogHeader> lastHeaderOf(QIODevice& device, LogRange range);

/// The range without what follows its last line end.
LogRange wholeLinesOf(QIODevice& device, LogRange range);

/// The last run of the log file at the machine path, with its counts. None without a file that can be opened,
/// or without a message in it.
std::optional<LogRun> lastRunOf(QStringView path);

} // namespace quoril
