#pragma once

#include "formats/error.h"

#include <QString>

namespace quoril {

/// The computer and the user that this program runs for, "HOST\user".
QString hostUserName();

/// Has a write beyond a limit for the size of files end in an error, and not end the program.
void reportFileSizeLimits();

/// The host's whole physical memory in bytes.
Result<quint64> hostMemory();

/// Milliseconds since the host's start, the time that it was suspended included.
quint64 hostTickCount();

} // namespace quoril
