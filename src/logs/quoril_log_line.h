#pragma once

#include <QString>

#include <array>

namespace quoril {

/// The fixed columns of a header line in the emulator's log, counted in units from 0.
namespace log_column {
inline constexpr quint32 Tag = 15;
inline constexpr quint32 TagEnd = 22;
inline constexpr quint32 Code = 24;
inline constexpr quint32 CodeEnd = 32;
inline constexpr quint32 Text = 52;
} // namespace log_column

/// The code of the message with which a run of the emulator begins.
inline constexpr quint32 StartMarkCode = 0x249;

/// A physical line of the emulator's log as it is kept, in 8 or 16 bits a unit; a line end belongs to it.
/// Whoever makes one calls cutAtZero wherever the text may have zero units.
class LogLine
{
public:
    LogLine(const uchar* bytes, quint32 size, bool wide) : m_bytes(bytes), m_size(size), m_wide(wide) { }

    /// Ends the line before its first zero unit, after which nothing is text.
    void cutAtZero();
    quint32 size() const { return m_size; }
    char16_t operator[](quint32 column) const
    {
        return m_wide ? char16_t(m_bytes[2 * column] | m_bytes[2 * column + 1] << 8)
                      : char16_t(m_bytes[column]);
    }

    /// 1, 2 or 3 for a header line by its severity tag, 0 for any other line.
    qint32 level() const;
    /// Year, month, day, hour, minute, second; a field without digits is 0.
    std::array<qint32, 6> time() const;
    /// What the line has of the code's columns.
    QString codeText() const;
    /// The number of the code, 0 if it begins with no hexadecimal digit after its zeros.
    quint32 code() const;
    /// The line from a column on, up to its line end, at most 512 units.
    QString text(quint32 fromColumn) const;

private:
    qint32 decimal(quint32 column, quint32 width) const;
    bool hasTag(quint32 column, const char* tag) const;

    const uchar* m_bytes;
    quint32 m_size;
    bool m_wide;
};

} // namespace quoril
