#pragma once

#include <QString>
#include <QStringView>

class QIODevice;

namespace quoril {

class ReportStream;

/// Writes the text lines of a Windows event log, "Application" or "System", from `from` to 15 seconds after
/// `to`, in seconds since 1970-01-01 UTC. False if the log can't be opened; nothing is written then.
bool WriteEventLog(ReportStream& out, QStringView log, qint64 from, qint64 to);

/// Writes the emulator's log between its banners, unit by unit as the emulator wrote it, or a line that says
/// that the machine path can't be opened. The same line follows what could be read of a file that could not
/// be read to its end.
void writeEmulatorLog(ReportStream& out, const QString& path);

/// The log's name in an emulator's configuration file, the quoted text of the first line that begins with
/// "set session log"; empty if there is no such line or it is none of that form. Lines are read as units of
/// 16 bits.
QString findLogName(QIODevice& configuration);

/// The log's name with the drive and folder of the configuration file where it has none of its own.
QString resolveLogName(const QString& logName, const QString& configurationName);

} // namespace quoril
