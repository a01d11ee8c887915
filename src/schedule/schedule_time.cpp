#include "schedule/schedule_time.h"

#include <ctime>

namespace quoril {

namespace {

static_assert(sizeof(std::time_t) == sizeof(qint64), "moments beyond 2038 need a time of 64 bits");

/// The last second that the platform's conversion knows: 3000-12-31 23:59:59 UTC.
constexpr qint64 LastMoment = 32'535'215'999;

std::optional<std::tm> localParts(qint64 moment)
{
    const std::time_t time = moment;
    const std::tm* const parts = std::localtime(&time);
    return parts ? std::optional(*parts) : std::nullopt;
}

void setTimeOfDay(std::tm& parts, QTime timeOfDay)
{
    parts.tm_hour = timeOfDay.hour();
    parts.tm_min = timeOfDay.minute();
    parts.tm_sec = timeOfDay.second();
}

} // namespace

void readTimeZone()
{
#ifdef Q_OS_WIN
    _tzset();
#else
    tzset();
#endif
}

QDate localDate(qint64 moment)
{
    const auto parts = localParts(moment);
    return parts ? QDate(parts->tm_year + 1900, parts->tm_mon + 1, parts->tm_mday) : QDate();
}

QTime localTimeOfDay(qint64 moment)
{
    const auto parts = localParts(moment);
    return parts ? QTime(parts->tm_hour, parts->tm_min, parts->tm_sec) : QTime();
}

std::optional<qint64> atTimeOfDay(qint64 moment, QTime timeOfDay)
{
    auto parts = localParts(moment);
    // Made anew, a moment of the hour that comes twice in autumn could become the other of the two.
    if (!parts || localTimeOfDay(moment) == timeOfDay)
        return moment;
    setTimeOfDay(*parts, timeOfDay);
    parts->tm_isdst = -1;
    const qint64 made = std::mktime(&*parts);
    return made < 0 ? std::nullopt : std::optional(made);
}

QString withSeconds(QString shortTimeFormat)
{
    const qsizetype minutes = shortTimeFormat.indexOf(u"mm");
    if (shortTimeFormat.contains(u's'))
        return shortTimeFormat;
    if (minutes < 1)
        return QStringLiteral("HH:mm:ss");
    return shortTimeFormat.insert(minutes + 2, shortTimeFormat[minutes - 1] + QStringLiteral("ss"));
}

std::optional<qint64> scheduleMoment(qint64 time, QDate date)
{
    auto parts = localParts(time);
    if (!parts)
        return std::nullopt;
    parts->tm_mday = date.day();
    parts->tm_wday = date.dayOfWeek() % 7;
    parts->tm_mon = date.month() - 1;
    parts->tm_year = date.year() - 1900;
    const qint64 moment = std::mktime(&*parts);
    if (moment < 0 || moment > LastMoment)
        return std::nullopt;
    return moment;
}

QString scheduleTimeText(qint64 moment)
{
    static constexpr const char16_t* Days[] = {u"Sun", u"Mon", u"Tue", u"Wed", u"Thu", u"Fri", u"Sat"};
    static constexpr const char16_t* Months[]
        = {u"Jan", u"Feb", u"Mar", u"Apr", u"May", u"Jun", u"Jul", u"Aug", u"Sep", u"Oct", u"Nov", u"Dec"};
    const auto parts = localParts(moment);
    if (!parts)
        return {};
    return QStringLiteral("%1 %2 %3 %4:%5:%6 %7")
        .arg(QStringView(Days[parts->tm_wday]), QStringView(Months[parts->tm_mon]))
        .arg(parts->tm_mday, 2, 10, QLatin1Char('0'))
        .arg(parts->tm_hour, 2, 10, QLatin1Char('0'))
        .arg(parts->tm_min, 2, 10, QLatin1Char('0'))
        .arg(parts->tm_sec, 2, 10, QLatin1Char('0'))
        .arg(parts->tm_year + 1900, 4, 10, QLatin1Char('0'));
}

} // namespace quoril
