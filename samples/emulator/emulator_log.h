#pragma once

#include <QString>

namespace quoril {

class Machine;

namespace emulator {

enum class Level
{
    Information,
    Warning,
    Error
};

/// The log file of an instance, and its events in the machine's Application log. What can't be written is
/// left out: an instance runs without its log.
class InstanceLog
{
public:
    /// The file is the one that the service's settings name. The machine is not owned and lives longer.
    InstanceLog(Machine& machine, const QString& service);

    /// Appends one message, in lines of fixed columns.
    void write(Level level, quint32 code, const QString& text);
    void reportEvent(Level level, quint32 code, const QString& text);

    const QString& computerName() const { return m_computer; }

private:
    Machine& m_machine;
    QString m_service;
    QString m_computer;
    QString m_file; // a path of the machine
};

/// One line of the log file or of an event: date and time, tag, code, and the text from column 52 on.
QString logLine(qint64 time, Level level, quint32 code, const QString& text);

/// Appends to a file of the machine, which is made where it is missing; the platform's part.
bool appendToFile(Machine& machine, const QString& path, const QByteArray& bytes);

} // namespace emulator

} // namespace quoril
