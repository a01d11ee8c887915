#include "schedule/schedule_time.h"

#include <gtest/gtest.h>

#include <QScopeGuard>

namespace quoril::test {

TEST(ScheduleTime, MakesMomentsAndWritesThemByTheLocalRules)
{
    const QByteArray before = qgetenv("TZ");
    const auto restore = qScopeGuard([&] {
        before.isNull() ? qunsetenv("TZ") : qputenv("TZ", before);
        ReadTimeZone();
    });
    qputenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
    ReadTimeZone();
    constexpr qint64 summer = 1'718'445'600; // 2024-06-15 10:00:00 UTC
    constexpr qint64 winter = 1'705'312'800; // 2024-01-15 10:00:00 UTC

    EXPECT_EQ(ScheduleMoment(summer, {2024, 6, 16}), summer + 86'400);
    // Twelve o'clock with the flag of summer is eleven o'clock in winter, and the other way round.
    EXPECT_EQ(ScheduleMoment(summer, {2024, 1, 15}), winter);
    EXPECT_EQ(ScheduleTimeText(*ScheduleMoment(winter, {2024, 3, 31})), u"Sun Mar 31 12:00:00 2024");
    EXPECT_FALSE(ScheduleMoment(winter, {1969, 12, 31}));
    EXPECT_FALSE(ScheduleMoment(winter, {3001, 1, 2}));
    EXPECT_TRUE(ScheduleMoment(winter, {3000, 12, 31}));

    EXPECT_EQ(ScheduleTimeText(315'623'035), u"Wed Jan 02 02:03:55 1980");
    EXPECT_EQ(AtTimeOfDay(summer, {23, 59, 30}), summer + 43'170);
    EXPECT_EQ(LocalDate(summer + 43'200), QDate(2024, 6, 16));
    // Half past two comes twice on this night: the moment keeps which of them it is.
    for (const qint64 moment : {1'729'989'000, 1'729'992'600}) {
        EXPECT_EQ(LocalTimeOfDay(moment), QTime(2, 30));
        EXPECT_EQ(ScheduleMoment(AtTimeOfDay(moment, {2, 30}), {2024, 10, 27}), moment);
    }
}

} // namespace quoril::test
