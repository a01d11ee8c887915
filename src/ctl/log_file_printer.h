#pragma once

#include <QtGlobal>

class QIODevice;

namespace quoril {

class Console;

/// Prints the rows of an emulator's log as they are read, as printLogRow() prints them, and keeps nothing of
/// it: how many messages it has. Without any nothing is printed.
qint64 printLogFile(Console& console, QIODevice& log, bool json);

} // namespace quoril
