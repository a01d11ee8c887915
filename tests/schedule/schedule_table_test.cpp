#include "schedule/schedule_table.h"

#include "support/fake_machine.h"

#include <future>
#include <random>
#include <set>

namespace quoril::test {

using namespace schedule_action;

namespace {

/// Its clock is asked once for each pass and once for each call to the service manager, in the midst of it.
struct Schedule : FakeMachine
{
    const qint64 now = fakeClock.now();
    ScheduleTable table;

    static ServiceInfo service(const QString& name)
    {
        ServiceInfo service;
        service.Name = name;
        return service;
    }
    OrderId add(const QString& name, qint64 time, qint32 action = Start)
    {
        return table.add({service(name), time, action});
    }
    /// What was carried out since the last look, in the words of the log.
    QStringList fired() { return calls.takeLog(u"^(start|control) "_s); }
    QString pass()
    {
        table.runPass();
        return fired().join(u' ');
    }
    QString names() const
    {
        QString names;
        for (const ScheduledOrder& order : table.orders())
            names += order.name;
        return names;
    }
    Schedule()
    {
        for (const QChar name : u"ABCDE"_s)
            fakeServices.service(name);
    }
};

} // namespace

TEST(ScheduleTable, CarriesOutWhatIsDueOnceInTheOrderOfTheTable)
{
    Schedule schedule;
    schedule.fakeServices.service(u"B"_s).errors[u"start"_s] = error::ServiceAlreadyRunning;
    schedule.add(u"A"_s, schedule.now, Stop);
    schedule.add(u"A"_s, schedule.now, Start);
    schedule.add(u"D"_s, schedule.now + 1);
    schedule.add(u"B"_s, schedule.now - 86'400);
    schedule.add(u"E"_s, schedule.now, 3);
    schedule.add(u"removed"_s, schedule.now);
    schedule.add(u"C"_s, 0);
    EXPECT_EQ(schedule.pass(), u"control A 1 start A start B start C");
    EXPECT_EQ(schedule.names(), u"D");

    schedule.add(u"C"_s, schedule.now + 3600);
    const std::pair<qint64, QStringView> clock[]
        = {{-7200, u""}, {0, u""}, {1, u"start D"}, {-100, u""}, {90'000, u"start C"}, {3600, u""}};
    for (const auto& [time, fired] : clock) {
        schedule.fakeClock.setNow(schedule.now + time);
        EXPECT_EQ(schedule.pass(), fired) << time;
    }
}

TEST(ScheduleTable, RemovesByIdentityAndKeepsNobodyWaitingForTheServiceManager)
{
    Schedule schedule;
    std::vector<OrderId> ids;
    for (const QChar name : u"ABCDE"_s)
        ids.push_back(schedule.add(name, name < u'D' ? 0 : schedule.now + 60));
    int asked = 0;
    schedule.fakeClock.onNow = [&] {
        if (++asked != 2)
            return;
        auto dialog = std::async(std::launch::async, [&] {
            // A is being carried out and no longer to be had, B still is; what is added now waits.
            EXPECT_EQ(schedule.table.remove(std::array{ids[1], ids[0]}), 1U);
            schedule.add(u"F"_s, 0);
            EXPECT_EQ(schedule.names(), u"ACDEF");
        });
        ASSERT_EQ(dialog.wait_for(std::chrono::seconds(10)), std::future_status::ready);
    };
    EXPECT_EQ(schedule.pass(), u"start A start C");
    EXPECT_EQ(schedule.names(), u"DEF");
    EXPECT_EQ(schedule.table.remove(std::array{ids[4], ids[0], ids[2], OrderId(99)}), 1U);
    EXPECT_EQ(schedule.names(), u"DF");
}

TEST(ScheduleTable, EndsPromptlyFromItsPauseAndWaitsForAPass)
{
    Schedule schedule;
    schedule.fakeClock.waitScale = 60; // a pause of a minute
    std::promise<void> inCall;
    int asked = 0;
    schedule.fakeClock.onNow = [&] {
        if (++asked == 2)
            inCall.set_value();
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    };
    const auto begin = std::chrono::steady_clock::now();
    {
        ScheduleTable worked;
        for (int i = 0; i < 2; ++i)
            worked.add({schedule.service(u"A"_s), 0, Start});
        EXPECT_TRUE(worked.StartScheduleWorker());
        EXPECT_TRUE(worked.StartScheduleWorker());
        inCall.get_future().wait();
        worked.endWorker();
    }
    EXPECT_EQ(schedule.fired().size(), 2);
    {
        ScheduleTable paused;
        EXPECT_TRUE(paused.StartScheduleWorker());
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
}

TEST(ScheduleTable, LosesRepeatsAndMistakesNoOrderWhileADialogWorksOnIt)
{
    constexpr int Orders = 15'000;
    constexpr std::size_t MostRemoved = 2'000; // the worker keeps the greater part, however slow it is
    Schedule schedule;
    schedule.fakeClock.waitScale = 0.001;
    for (int i = 0; i < Orders; ++i)
        schedule.fakeServices.service(QString::number(i));
    std::multiset<QString> fates;
    const auto isDue = [](const ScheduledOrder& order) { return order.time == 0; };
    {
        ScheduleTable worked;
        EXPECT_TRUE(worked.StartScheduleWorker());
        std::mt19937 random(7);
        for (int i = 0; i < Orders; ++i) {
            worked.add({schedule.service(QString::number(i)), random() % 6 ? 0 : 9'000'000'000, Start});
            if (random() % 16 || fates.size() > MostRemoved)
                continue;
            // The list is built, the worker goes on, and some rows are removed, one at a time so that it is
            // known which of them still waited.
            const auto rows = worked.orders();
            for (std::size_t row = random() % 40; row < rows.size(); row += 1 + random() % 400) {
                if (worked.remove(std::array{rows[row].id}) == 1)
                    fates.insert(rows[row].name);
            }
        }
        EXPECT_GT(fates.size(), 100U);
        while (std::ranges::any_of(worked.orders(), isDue))
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        for (const ScheduledOrder& order : worked.orders())
            fates.insert(order.name);
    }
    const QStringList fired = schedule.fired();
    EXPECT_GE(fired.size(), 10'000);
    for (const QString& call : fired)
        fates.insert(call.section(u' ', 1));
    for (int i = 0; i < Orders; ++i)
        ASSERT_EQ(fates.count(QString::number(i)), 1U) << i;
}

} // namespace quoril::test
