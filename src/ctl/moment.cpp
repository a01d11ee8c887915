#include "ctl/moment.h"

#include <QDateTime>

#include <limits>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 LastMoment = std::numeric_limits<quint32>::max();

std::optional<qint64> inRange(qint64 moment)
{
    return moment >= 0 && moment <= LastMoment ? std::optional(moment) : std::nullopt;
}

} // namespace

std::optional<qint64> parseDuration(QStringView text)
{
    if (text.isEmpty())
        return std::nullopt;
    qint64 unit = 1;
    switch (text.back().unicode()) {
    case u'h':
        unit = 3600;
        text.chop(1);
        break;
    case u'm':
        unit = 60;
        text.chop(1);
        break;
    case u's':
        text.chop(1);
        break;
    default:
        break;
    }
    bool isNumber = false;
    const uint count = text.toUInt(&isNumber);
    return isNumber ? std::optional(qint64(count) * unit) : std::nullopt;
}

std::optional<qint64> parseMoment(QStringView text)
{
    QString iso = text.toString();
    if (iso.size() > 10 && iso[10] == u' ')
        iso[10] = u'T';
    const QDateTime time = QDateTime::fromString(iso, Qt::ISODate);
    return time.isValid() ? inRange(time.toSecsSinceEpoch()) : std::nullopt;
}

std::optional<qint64> parseOrderTime(QStringView text, qint64 now)
{
    if (text.startsWith(u'+')) {
        const auto delay = parseDuration(text.sliced(1));
        return delay ? inRange(now + *delay) : std::nullopt;
    }
    const QString clock = text.toString();
    QTime time = QTime::fromString(clock, u"HH:mm"_s);
    if (!time.isValid())
        time = QTime::fromString(clock, u"HH:mm:ss"_s);
    if (!time.isValid())
        return parseMoment(text);
    const QDate today = QDateTime::fromSecsSinceEpoch(now).date();
    const qint64 moment = QDateTime(today, time).toSecsSinceEpoch();
    return inRange(moment >= now ? moment : QDateTime(today.addDays(1), time).toSecsSinceEpoch());
}

QString momentText(qint64 moment)
{
    return QDateTime::fromSecsSinceEpoch(moment).toString(u"yyyy-MM-dd HH:mm:ss"_s);
}

std::optional<TimedOrder> parseOrder(QStringView text, qint64 now, QString& fault)
{
    const qsizetype at = text.indexOf(u'@');
    const qsizetype sign = text.indexOf(u'=', at);
    const QStringView action = text.left(qMax<qsizetype>(at, 0));
    TimedOrder order;
    fault.clear();
    if (action == u"start")
        order.action = schedule_action::Start;
    else if (action == u"stop")
        order.action = schedule_action::Stop;
    else
        fault = u"it starts with neither start@ nor stop@"_s;
    if (order.action != 0 && (sign < 0 || sign + 1 == text.size()))
        fault = u"it has no =NAME at its end"_s;
    if (!fault.isEmpty())
        return std::nullopt;
    const QStringView timeText = text.sliced(at + 1, sign - at - 1);
    const auto time = parseOrderTime(timeText, now);
    if (!time) {
        fault = u"\"%1\" is not a time"_s.arg(timeText);
        return std::nullopt;
    }
    order.time = *time;
    order.name = text.sliced(sign + 1).toString();
    return order;
}

} // namespace quoril
