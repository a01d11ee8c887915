#pragma once

#include "formats/error.h"

#include <chrono>
#include <stop_token>

namespace quoril {

/// How long to wait for what locks the screen: ten looks with a pause between them, fewer where it is to
/// stop.
struct LockPatience
{
    std::stop_token stop;
    std::chrono::milliseconds betweenLooks{150};
};

/// Locks the person's session: asks the login manager for it, and the screen saver where that one doesn't
/// answer or nobody heeds it. Success means that the screen is said to be locked; 120 that nobody says so
/// within a few seconds, or within a moment where it is to stop.
Status lockWorkstationOverBus(const LockPatience& patience = {});

} // namespace quoril
