#pragma once

#include <QtGlobal>

#include <array>
#include <optional>

namespace quoril {

class ServiceInfo;

/// Sets the log period of an instance to its last run: from the last start mark of its log to its last
/// message, or to now while it runs. Without a readable log there is no period.
void takeLastRun(ServiceInfo& service);

/// A time as the emulator's log writes it, the local one, in seconds since 1970 UTC. None for what is no
/// date, and beyond 32 bits.
std::optional<qint64> momentOf(const std::array<qint32, 6>& time);

} // namespace quoril
