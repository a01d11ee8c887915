#pragma once

#include "formats/error.h"

#include <QString>

namespace quoril {

/// Makes the sample machine, a small Windows system tree with some emulator instances, in a folder that does
/// not exist yet; its parent folders are made. It is built beside its place and put there when it is whole,
/// so that programs that start at once get one machine; one that is there already is left as it is.
Status createSampleMachine(const QString& folder);

} // namespace quoril
