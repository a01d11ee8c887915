#pragma once

#include "platform/large_buffer.h"

#include <QString>
#include <QStringView>

#include <array>
#include <functional>
#include <span>
#include <vector>

class QIODevice;

namespace quoril {

class LogLine;
struct LogRange;

/// One line of message text, cut before its line end and after 512 units.
class wMsg
{
public:
    static constexpr qsizetype Capacity = 512;

    void Set(QStringView line);

    QString m_text;
};

/// One message of the emulator's log with all its lines.
class QuorilLogMessage
{
public:
    void AddLine(QStringView line);
    qsizetype GetLineCount() const { return qsizetype(m_lines.size()); }
    const QString& GetLine(qsizetype index) const { return m_lines[std::size_t(index)].m_text; }

    qint32 m_level = 0; ///< 1 information, 2 warning, 3 error
    /// Year, month, day, hour, minute, second as they are written, plausible or not.
    std::array<qint32, 6> dt_tm{};
    QString m_code_text; ///< up to eight units
    quint32 m_code = 0; ///< the number of m_code_text
    std::vector<wMsg> m_lines; ///< the header line's text, then the lines after it
};

/// The emulator's log file, read in one go, by several threads if it is large. The file is known by fixed
/// columns alone: a line with a severity tag at column 15 begins a message, any other belongs to the message
/// before it. A load from the last start mark on looks for it from the end of the file and reads no more.
///
/// The text is kept once, in 8 bits a unit wherever it has no unit above 0xFF, and lines and messages as
/// positions in it, so that memory stays well below the size of the file. Messages are made when asked for.
class QuorilLog
{
public:
    /// What a load keeps.
    enum class Keep
    {
        All,
        FromLastStart ///< only the messages from the last start mark on; all if there is none
    };

    /// Reads the file at the machine path: 0 read to its end, 1 an empty path, 2 the file can't be opened,
    /// or there is no memory for it, after which nothing is left of it.
    /// Else only a result of 0 replaces what was there. A failure while reading counts as the end of the
    /// file.
    qint32 Load(QStringView path, Keep keep = Keep::All);
    /// The same for a range of the file.
    qint32 Load(QStringView path, const LogRange& range);
    /// The same for an open device of 16-bit little-endian units.
    void read(QIODevice& device, Keep keep = Keep::All);

    /// Index of the last message of code StartMarkCode, 0 if there is none.
    qint32 m_last_message = 0;

    qsizetype GetCount() const { return m_messageCount; }
    /// The message at the index, 0 to GetCount() - 1.
    QuorilLogMessage GetMessage(qsizetype index) const;

    /// All text lines of all messages are numbered through. This is the first line of a message, or the
    /// number of lines for the index GetCount().
    qsizetype firstLineOf(qsizetype message) const;
    qsizetype lineCount() const { return m_lineCount; }
    /// The message that a line belongs to.
    qsizetype messageOf(qsizetype line) const;
    /// The text of a line.
    QString lineText(qsizetype number) const;
    /// The header of a message, as in its QuorilLogMessage.
    qint32 levelOf(qsizetype message) const;
    std::array<qint32, 6> timeOf(qsizetype message) const;
    QString codeTextOf(qsizetype message) const;

private:
    /// A piece of the text with the lines that begin in it, each whole. Positions count units.
    struct Chunk
    {
        void split(std::span<const char16_t> units);
        void dropOrphans(); ///< the lines before the first header
        LogLine lineAt(quint32 begin, quint32 end) const;

        bool wide = false; ///< 16 bits a unit, else 8
        bool zeros = false; ///< the text has zero units
        quint32 size = 0;
        LargeBuffer bytes;
        std::vector<quint32> lines; ///< where they begin
        std::vector<quint32> headers; ///< which of the lines begin a message
        qsizetype startMark = -1; ///< the last of the headers with StartMarkCode
        qsizetype firstLine = 0; ///< number of the first of the lines
        qsizetype firstMessage = 0; ///< number of the first of the headers
    };
    class Reader;

    /// What both ways of loading share; `takeIn` may run out of memory.
    qint32 load(QStringView path, const std::function<void(QIODevice&)>& takeIn);
    void clear();
    LogLine line(qsizetype number) const;
    LogLine headerOf(qsizetype message) const;
    const Chunk& chunkOfLine(qsizetype line) const;
    const Chunk& chunkOfMessage(qsizetype message) const;

    std::vector<Chunk> m_chunks; ///< none without lines
    qsizetype m_messageCount = 0;
    qsizetype m_lineCount = 0;
};

} // namespace quoril
