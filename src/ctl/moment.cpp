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

std::optional<qint64> parseDelay(QStringView text, qint64 now)
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
    return isNumber ? inRange(now + qint64(count) * unit) : std::nullopt;
}

} // namespace

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
    if (text.startsWith(u'+'))
        return parseDelay(text.sliced(1), now);
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

std::optional<TimedOrder> parseOrder(QStringView text, qint64 now)
{
    const qsizetype at = text.indexOf(u'@');
    const qsizetype sign = text.indexOf(u'=', at);
    if (at < 0 || sign < 0)
        return std::nullopt;
    TimedOrder order;
    if (text.left(at) == u"start")
        order.action = schedule_action::Start;
    else if (text.left(at) == u"stop")
        order.action = schedule_action::Stop;
    const auto time = parseOrderTime(text.mid(at + 1, sign - at - 1), now);
    order.name = text.sliced(sign + 1).toString();
    if (order.action == 0 || !time || order.name.isEmpty())
        return std::nullopt;
    order.time = *time;
    return order;
}

} // namespace quoril
