#pragma once

#include <QDateTime>
#include <QString>

#include <optional>

namespace quoril {

// Local time by the machine's time zone and the rules of the run-time library. Moments are seconds since 1970
// UTC. All of this belongs to one thread, the main one.

/// Takes the machine's time zone for all conversions that follow.
void readTimeZone();

/// The local day and the local time of day of a moment.
QDate localDate(qint64 moment);
QTime localTimeOfDay(qint64 moment);

/// The moment on the same local day at another time of day; the moment itself if it has that time already.
/// None before 1970, or where the platform can't convert it.
std::optional<qint64> atTimeOfDay(qint64 moment, QTime timeOfDay);

/// A locale's format of a short time ("h:mm AP") with its seconds.
QString withSeconds(QString shortTimeFormat);

/// The moment that an order is for: the time of day and the daylight-saving flag are those of one moment, the
/// day is the date. So an order that is made in summer for a day in winter fires an hour earlier by the
/// clock. None where there is no such moment between 1970 and 3000.
std::optional<qint64> scheduleMoment(qint64 time, QDate date);

/// The moment's local time in the fixed English form of 24 characters, "Wed Jan 02 02:03:55 1980"; empty for
/// one that has none.
QString scheduleTimeText(qint64 moment);

} // namespace quoril
