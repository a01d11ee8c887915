#include "ctl/last_run.h"

#include "logs/quoril_log.h"
#include "platform/clock.h"
#include "platform/machine.h"
#include "shell/service_info.h"

#include <QDateTime>

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

void takeLastRun(ServiceInfo& service)
{
    QuorilLog log;
    if (log.Load(service.LogFile, QuorilLog::Keep::FromLastStart) != 0 || log.GetCount() == 0)
        return;
    const auto from = momentOf(log.timeOf(log.m_last_message));
    const bool runs = service.QueryState() == 0 && service.Reported.currentState != service_state::Stopped;
    const auto to = runs ? machine().clock().now() : momentOf(log.timeOf(log.GetCount() - 1));
    if (from && to) {
        service.LogFrom = quint32(*from);
        service.LogTo = quint32(*to);
    }
}

} // namespace quoril
