#include "ctl/last_run.h"

#include "platform/clock.h"
#include "platform/files.h"
#include "platform/machine.h"
#include "services/service_info.h"

#include <QDateTime>
#include <QIODevice>

#include <limits>
#include <optional>

namespace quoril {

std::optional<qint64> momentOf(const std::array<qint32, 6>& time)
{
    const QDateTime local(QDate(time[0], time[1], time[2]), QTime(time[3], time[4], time[5]));
    const qint64 moment = local.isValid() ? local.toSecsSinceEpoch() : -1;
    return moment >= 0 && moment <= std::numeric_limits<quint32>::max() ? std::optional(moment)
                                                                        : std::nullopt;
}

void takeRunPeriod(ServiceInfo& service, QIODevice& log, const LogRange& runs, bool hasLastRun)
{
    const auto first = firstHeaderOf(log, runs);
    const auto last = lastHeaderOf(log, runs);
    if (!first || !last)
        return;
    const auto from = momentOf(first->time);
    const bool isRunning
        = hasLastRun && service.QueryState() == 0 && service.Reported.currentState != service_state::Stopped;
    const auto to = isRunning ? machine().clock().now() : momentOf(last->time);
    if (from && to) {
        service.LogFrom = quint32(*from);
        service.LogTo = quint32(*to);
    }
}

void takeLastRun(ServiceInfo& service)
{
    if (service.LogFile.isEmpty())
        return;
    const auto log = machine().files().openForReading(service.LogFile);
    if (!log)
        return;
    if (const auto run = findRunFromEnd(**log, wholeLog(**log), 0))
        takeRunPeriod(service, **log, *run, true);
}

} // namespace quoril
