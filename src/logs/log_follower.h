#pragma once

#include "logs/log_runs.h"

#include <QByteArray>
#include <QIODevice>
#include <QString>

#include <functional>
#include <memory>

namespace quoril {

/// Follows the log file of an instance while it grows, is cut, renamed, removed or made anew. It is asked
/// from time to time and gives the lines that came; one that is not ended yet comes when it is, or when it
/// has stood from one time to the next. A new file is known by what stands before the place that was read
/// last.
class LogFollower
{
public:
    using Visit = std::function<void(const LogHeader& message, const QString& text)>;

    /// Begins after a range of the file at the machine path, whose lines were read. Without it with the
    /// first line that the file will have.
    LogFollower(QString path, std::optional<LogRange> read);

    /// Visits the text lines that came since the last time, each with the header of its message.
    void poll(const Visit& visit);

private:
    enum class Rest
    {
        Wait,
        Take
    };

    bool continues(QIODevice& device) const;
    void take(QIODevice& device, Rest rest, const Visit& visit);
    void takeLines(std::span<const char16_t> lines, const Visit& visit);

    QString m_path;
    std::unique_ptr<QIODevice> m_device; ///< keeps a renamed file until it is read to its end
    qint64 m_position = 0; ///< bytes
    QByteArray m_before; ///< what stood in front of the position
    qint64 m_rest = 0; ///< bytes after the position without a line end
    LogHeader m_message;
};

} // namespace quoril
