#include "access/idle_lock.h"

#include "platform/machine.h"
#include "platform/session.h"
#include "platform/system_info.h"
#include "resources/text_ids.h"

#include <utility>

namespace quoril {

namespace {

constexpr quint32 Second = 1000;
constexpr quint32 Minute = 60 * Second;
constexpr quint32 Hour = 60 * Minute;

constexpr LockChoice LockChoices[] = {
    {0, text::LockDisabled, 0},
    {1, text::Lock10Seconds, 10 * Second},
    {2, text::Lock30Seconds, 30 * Second},
    {3, text::Lock1Minute, Minute},
    {4, text::Lock10Minutes, 10 * Minute},
    {5, text::Lock20Minutes, 20 * Minute},
    {6, text::Lock30Minutes, 30 * Minute},
    {7, text::Lock1Hour, Hour},
    {8, text::Lock2Hours, 2 * Hour},
    {9, text::Lock4Hours, 4 * Hour},
    {10, text::Lock8Hours, 8 * Hour},
    {11, text::Lock12Hours, 12 * Hour},
    {12, text::Lock24Hours, 24 * Hour},
    {-1, 0, 0},
};

} // namespace

const std::span<const LockChoice> g_lock_choices = LockChoices;

void IdleLock::ArmIdleTimer()
{
    if (m_idle_timer == 0)
        m_idle_timer = SetTimer(IdleTimerId, IdlePeriod);
}

void IdleLock::KillIdleTimers()
{
    kill(m_idle_timer);
    kill(m_lock_timer);
}

void IdleLock::OnTimer(quint32 id)
{
    if (m_lock_timer != 0 && id == m_lock_timer) {
        kill(m_lock_timer);
        LockNow();
    } else if (m_idle_timer != 0 && id == m_idle_timer) {
        const quint32 timeout = lockTimeout();
        if (timeout != 0 && m_lock_timer == 0)
            m_lock_timer = SetTimer(LockTimerId, timeout);
    }
}

void IdleLock::kill(quint32& timer)
{
    if (timer != 0)
        KillTimer(std::exchange(timer, 0));
}

void LockWorkstationIfSupported()
{
    constexpr quint32 FirstMajor = 5; // older systems lock nothing
    const auto version = machine().systemInfo().version();
    if (version && version->platformId == SystemVersion::PlatformNt && version->major >= FirstMajor)
        static_cast<void>(machine().session().lockWorkstation());
}

} // namespace quoril
