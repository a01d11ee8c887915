#pragma once

#include <QString>

namespace quoril {

class ReportStream;

/// What the hardware part of a report is to hold beside the description of the host.
struct HardwareSections
{
    bool executablesWanted = false;
    QString executablePath; ///< the emulator's, quoted or not; the files of its folder are listed
    QString guiExecutablePath; ///< the console's; the current directory if it is empty
};

/// Writes the sections about executables and drivers where they are wanted, then the hardware block. All that
/// the block says is gathered before. What can't be found out stands as unknown; nothing here fails.
void writeHardwareSections(ReportStream& out, const HardwareSections& wanted);

} // namespace quoril
