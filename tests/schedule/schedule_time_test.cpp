#include "schedule/schedule_time.h"
#include "support/time_zone.h"

#include <QScopeGuard>

namespace quoril::test {

TEST(ScheduleTime, MakesMomentsAndWritesThemByTheLocalRules)
{
    const QByteArray before = qgetenv("TZ");
    const auto restore = qScopeGuard([&] {
        before.isNull() ? qunsetenv("TZ") : qputenv("TZ", before);
        readTimeZone();
    });
    // The rules at the end are those that Windows takes for any name, and are written out for the others.
    useTimeZone("EST5EDT,M3.2.0,M11.1.0");
    constexpr qint64 summer = 1'718'445'600; // 2024-06-15 10:00:00 UTC
    constexpr qint64 winter = 1'705'312'800; // 2024-01-15 10:00:00 UTC

    EXPECT_EQ(scheduleMoment(summer, {2024, 6, 16}), summer + 86'400);
    // Six o'clock with the flag of summer is five o'clock in winter, and the other way round.
    EXPECT_EQ(scheduleMoment(summer, {2024, 1, 15}), winter);
    EXPECT_EQ(scheduleTimeText(*scheduleMoment(winter, {2024, 3, 10})), u"Sun Mar 10 06:00:00 2024");
    EXPECT_FALSE(scheduleMoment(winter, {1969, 12, 31}));
    EXPECT_FALSE(scheduleMoment(winter, {3001, 1, 2}));
    EXPECT_TRUE(scheduleMoment(winter, {3000, 12, 31}));

    EXPECT_EQ(scheduleTimeText(315'641'035), u"Wed Jan 02 01:03:55 1980");
    EXPECT_EQ(atTimeOfDay(summer, {23, 59, 30}), summer + 64'770);
    EXPECT_EQ(localDate(summer + 64'800), QDate(2024, 6, 16));
    // Half past one comes twice on this night: the moment keeps which of them it is.
    for (const qint64 moment : {1'730'611'800, 1'730'615'400}) {
        EXPECT_EQ(localTimeOfDay(moment), QTime(1, 30));
        EXPECT_EQ(scheduleMoment(*atTimeOfDay(moment, {1, 30}), {2024, 11, 3}), moment);
    }
    EXPECT_EQ(atTimeOfDay(3600, {18, 59, 59}), std::nullopt); // the second before 1970
    const std::pair<QString, QString> formats[] = {{QStringLiteral("h:mm AP"), QStringLiteral("h:mm:ss AP")},
        {QStringLiteral("HH.mm"), QStringLiteral("HH.mm.ss")},
        {QStringLiteral("h:mm:ss AP"), QStringLiteral("h:mm:ss AP")},
        {QStringLiteral("mm"), QStringLiteral("HH:mm:ss")}};
    for (const auto& [shortFormat, format] : formats)
        EXPECT_EQ(withSeconds(shortFormat), format);
}

} // namespace quoril::test
