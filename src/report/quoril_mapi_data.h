#pragma once

#include <QString>

namespace quoril {

/// The record of one report: what is asked for, and what the stages have made of it.
struct QuorilMAPIData
{
    QString TempPrefix; ///< what the temporary files' names begin with
    QString ConfigFileName; ///< machine path of a configuration file that may name the log; empty for none
    QString LogFileName; ///< machine path of the emulator's log; empty for none
    QString ServiceName;
    QString LogAttachment; ///< host paths of the temporary files, each made by its stage
    QString RegistryAttachment;
    QString HardwareAttachment;
    QString ExecutablePath; ///< the service's `ImagePath`
    QString GuiExecutablePath; ///< of the console's own program, on the host if it isn't on the machine
    bool HardwareReady = false; ///< the stage's temporary file is there and whole
    bool LogReady = false;
    bool RegistryReady = false;
    bool ConfigWanted = false; ///< append the file ConfigFileName
    bool ExecutablesWanted = false; ///< describe executables and drivers
    QString ConfigSummary; ///< the service's headline values, ready to be written
    qint64 LogFrom = 0; ///< the span of the event logs, in seconds since 1970-01-01 UTC; 0 for a default
    qint64 LogTo = 0;
};

} // namespace quoril
