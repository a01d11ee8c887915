#pragma once

#include "platform/session.h"

namespace quoril {

/// The lock keys of the keyboard of the X display; all off without one or without the X client library.
LockKeys hostLockKeys();

} // namespace quoril
