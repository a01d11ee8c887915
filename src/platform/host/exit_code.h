#pragma once

#include <QString>

namespace quoril {

/// A status of the host has eight bits, an exit code of Windows has 32. A program of a tree writes its whole
/// code to this descriptor before it ends, where the environment variable says that there is one.
inline constexpr int ExitCodeDescriptor = 3;
inline constexpr QStringView ExitCodeVariable = u"QUORIL_EXIT_CODE_FD";

/// The exit code of a program that a signal ended, as Windows has it for one that was broken off.
inline constexpr quint32 StatusControlCExit = 0xC000013A;

/// Gives whoever started this program the code that it is about to end with. Without somebody who asked for
/// it nothing happens.
void reportExitCode(quint32 code);

/// The exit code of a program that ended with the status, by what it wrote to the file: a decimal number
/// whose last eight bits are the status. Without that it is the status, and 0xFFFFFFFF for 255.
quint32 exitCodeOf(int status, int file);

/// A file in memory for the code, closed with a new program; -1 if there can be none.
int makeExitCodeFile();

} // namespace quoril
