#pragma once

#include <QString>

namespace quoril {

/// Brings the running system monitor forward, or starts one when no window of its title is found. The text is
/// what the person is to be told of a failure; empty otherwise.
QString ShowSystemMonitor();

/// Ends the system monitor that this process started last, if there is one.
void StopMonitorAtExit();

/// The system's text of an error number as it stands, with the number; the number alone if there is no text.
QString FormatSystemError(quint32 code);

} // namespace quoril
