#pragma once

#include "platform/processes.h"

#include <QString>

#include <memory>

namespace quoril {

/// The system monitor of the console: the one that this process started last is known, and only that one.
class SystemMonitor
{
public:
    /// Brings the running system monitor forward, or starts one when no window of its title is found. The
    /// text is the message of a failure; empty otherwise.
    QString show();

    /// Ends the system monitor that was started last, if there is one. The machine is in force.
    void StopMonitorAtExit();

private:
    std::unique_ptr<Process> m_monitorProcess;
};

/// The system's text of an error number as it stands, with the number; the number alone if there is no text.
QString FormatSystemError(quint32 code);

} // namespace quoril
