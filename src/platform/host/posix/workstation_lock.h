#pragma once

#include "formats/error.h"

namespace quoril {

/// Locks the person's session: asks the login manager for it, and the screen saver where there is none or
/// where it refuses. 120 when neither answers.
Status lockWorkstationOverBus();

} // namespace quoril
