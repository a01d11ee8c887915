#pragma once

#include "ctl/console.h"
#include "formats/error.h"

#include <QStringList>

#include <functional>
#include <memory>

namespace quoril {

class Machine;

/// How the program ends.
namespace exit_code {
inline constexpr int Done = 0;
inline constexpr int Failed = 1;
inline constexpr int Usage = 2;
inline constexpr int Interrupted = 130; ///< by Ctrl+C, as shells report it
} // namespace exit_code

/// Opens the machine of a folder, or the program's own choice where the folder is empty.
using MachineOpener = std::function<Result<std::shared_ptr<Machine>>(const QString& folder)>;

/// Carries out one command line, the program's name first: the exit code.
int runCtl(const QStringList& arguments, Console& console, const MachineOpener& openMachine);

} // namespace quoril
