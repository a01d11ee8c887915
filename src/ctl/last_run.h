#pragma once

#include "logs/log_runs.h"

#include <QtGlobal>

#include <array>
#include <optional>

class QIODevice;

namespace quoril {

class ServiceInfo;

/// Sets the log period of an instance to its last run: from the last start mark of its log to its last
/// message, or to now while it runs. Without a readable log there is no period.
void takeLastRun(ServiceInfo& service);

/// The same for runs that a range of its log holds; only a range with the last run ends now.
void takeRunPeriod(ServiceInfo& service, QIODevice& log, const LogRange& runs, bool hasLastRun);

/// A time as the emulator's log writes it, the local one, in seconds since 1970 UTC. None for what is no
/// date, and beyond 32 bits.
std::optional<qint64> momentOf(const std::array<qint32, 6>& time);

} // namespace quoril
