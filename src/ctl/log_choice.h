#pragma once

#include "ctl/output.h"
#include "logs/log_runs.h"

#include <optional>

namespace quoril {

class ServiceInfo;
struct Ctl;

/// What of an instance's logs is shown.
struct LogChoice
{
    quint32 from = 0; ///< period of the events; 0 and 0 for that of the runs
    quint32 to = 0;
    /// 0 for the last run, -1 for the one before; 1 for the first that the log holds. None for all of them.
    std::optional<qsizetype> run = 0;
    LogRowFilter filter;
};

/// Finds the chosen runs in an instance's own log and settles its log period. The range stays empty where the
/// log can't be read or has no message; a run that it does not hold is reported and gives false.
bool chooseLogs(Ctl& ctl, ServiceInfo& service, const LogChoice& choice, std::optional<LogRange>& range);

/// Shows what is chosen and what comes after it, until it is interrupted or nobody reads it any more: the
/// exit code.
int followLogs(Ctl& ctl, const std::vector<ServiceInfo*>& services, const LogChoice& choice);

} // namespace quoril
