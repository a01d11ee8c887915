#pragma once

#include "formats/error.h"

#include <stop_token>

namespace quoril {

/// Locks the person's session: asks the login manager for it, and the screen saver where that one doesn't
/// answer or nobody heeds it. Success means that the screen is said to be locked; 120 that nobody says so
/// within a few seconds, or within a moment where it is to stop.
Status lockWorkstationOverBus(const std::stop_token& stop = {});

} // namespace quoril
