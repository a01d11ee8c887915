#pragma once

#include <memory>

namespace quoril {

class Session;

/// The session of the person on the host, whose machine a tree is.
std::unique_ptr<Session> openHostSession();

} // namespace quoril
