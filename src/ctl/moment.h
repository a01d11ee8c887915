#pragma once

#include "schedule/schedule_table.h"

#include <QString>
#include <QStringView>

#include <optional>

namespace quoril {

// Moments are seconds since 1970-01-01 UTC.

/// The moment of a date and time, "2026-11-30", "2026-11-30T18:00" or with seconds, a blank in the place of
/// the T too. It is local time unless Z or an offset follows it. None for any other text, and for a
/// time beyond 32 bits.
std::optional<qint64> parseMoment(QStringView text);

/// The seconds of a time span: "90", "90s", "15m" or "2h".
std::optional<qint64> parseDuration(QStringView text);

/// The same for an order: also "18:00" or "18:00:30" for the next time that the clock shows that, and "+90",
/// "+90s", "+15m" or "+2h" from now on.
std::optional<qint64> parseOrderTime(QStringView text, qint64 now);

/// A moment as the logs show it, "2026-11-30 18:00:00" in local time.
QString momentText(qint64 moment);

/// What one argument orders: "start@TIME=NAME" or "stop@TIME=NAME".
struct TimedOrder
{
    qint32 action = 0; ///< of schedule_action
    qint64 time = 0;
    QString name;
};

/// None for any other text; `fault` says then which part of it is wrong.
std::optional<TimedOrder> parseOrder(QStringView text, qint64 now, QString& fault);

} // namespace quoril
