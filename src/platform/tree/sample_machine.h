#pragma once

#include "formats/error.h"

#include <QString>

namespace quoril {

/// Makes the sample machine, a small Windows system tree with some emulator instances, in a folder that does
/// not exist yet; its parent folders are made. It is built beside its place in a folder of a name of its own,
/// and put there when it is whole: of programs that make it at once one does, and the others get 80, as for
/// anything else that is there. Nothing is removed but what was made here.
Status createSampleMachine(const QString& folder);

} // namespace quoril
