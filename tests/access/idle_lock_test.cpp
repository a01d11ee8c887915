#include "access/idle_lock.h"

#include "support/fake_machine.h"

namespace quoril::test {

namespace {

/// A window with timers of the manual clock.
struct Window : FakeMachine, IdleLock
{
    quint32 timeout = 10'000;
    bool refuses = false;
    std::map<quint32, std::pair<quint32, quint64>> timers; ///< period and next firing, by id

    quint32 SetTimer(quint32 id, quint32 period) override
    {
        if (!refuses)
            timers[id] = {period, fakeClock.tickCount() + period};
        return refuses ? 0 : id;
    }
    void KillTimer(quint32 id) override { timers.erase(id); }
    quint32 lockTimeout() const override { return timeout; }
    void LockNow() override { LockWorkstationIfSupported(); }
    /// Lets the time pass in half seconds; gives the timers that run, how often the workstation was locked.
    std::string pass(quint32 milliseconds)
    {
        for (const quint64 end = fakeClock.tickCount() + milliseconds; fakeClock.tickCount() < end;) {
            fakeClock.advance(500);
            for (const quint32 id : {IdleTimerId, LockTimerId}) {
                const auto timer = timers.find(id);
                if (timer == timers.end() || timer->second.second > fakeClock.tickCount())
                    continue;
                timer->second.second += timer->second.first;
                OnTimer(id);
            }
        }
        std::string state = timers.contains(1) ? timers.contains(2) ? "counting" : "idle" : "active";
        return state + std::string(std::size_t(calls.takeLog().count(u"lock workstation"_s)), '!');
    }
};

} // namespace

TEST(IdleLock, LocksASecondAfterTheChosenTimeAndAgainUntilThereIsActivity)
{
    Window window;
    window.fakeSystemInfo.systemVersion.major = 5;
    EXPECT_EQ(window.pass(5'000), "active");
    window.ArmIdleTimer();
    EXPECT_EQ(window.pass(500), "idle");
    window.ArmIdleTimer();
    EXPECT_EQ(window.pass(500), "counting");
    EXPECT_EQ(window.pass(9'500), "counting");
    EXPECT_EQ(window.pass(500), "idle!");
    EXPECT_EQ(window.pass(22'000), "idle!!");
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(window.pass(10'500), "counting");
        window.OnActivity();
        window.OnTimer(IdleLock::LockTimerId); // a tick that was on its way
        window.OnTimer(IdleLock::IdleTimerId);
        EXPECT_EQ(window.pass(0), "active");
        window.ArmIdleTimer();
    }
    // A new choice, disabled, and a timer that is refused.
    window.timeout = 30'000;
    EXPECT_EQ(window.pass(30'500), "counting");
    window.timeout = 0;
    EXPECT_EQ(window.pass(500), "idle!");
    EXPECT_EQ(window.pass(100'000), "idle");
    window.timeout = 10'000;
    window.refuses = true;
    EXPECT_EQ(window.pass(20'000), "idle");
    window.KillIdleTimers();
    window.ArmIdleTimer();
    EXPECT_EQ(window.pass(20'000), "active");

    const std::tuple<quint32, quint32, bool> versions[]
        = {{2, 4, false}, {1, 5, false}, {2, 6, true}, {0, 0, false}}; // the last one can't be asked for
    for (const auto& [platform, major, locks] : versions) {
        window.fakeSystemInfo.systemVersion.platformId = platform;
        window.fakeSystemInfo.systemVersion.major = major;
        window.calls.failAt(major == 0 ? 1 : 0);
        LockWorkstationIfSupported();
        EXPECT_EQ(window.calls.takeLog().contains(u"lock workstation"_s), locks) << platform << '.' << major;
    }
}

} // namespace quoril::test
