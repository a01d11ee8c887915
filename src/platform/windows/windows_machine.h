#pragma once

#include "platform/machine.h"

#include <memory>

namespace quoril {

/// The machine that the program runs on.
std::unique_ptr<Machine> openLiveMachine();

} // namespace quoril
