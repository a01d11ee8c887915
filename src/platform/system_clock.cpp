#include "platform/system_clock.h"

#include "platform/host/host_system.h"

#include <QThread>

#include <algorithm>
#include <chrono>
#include <limits>

namespace quoril {

qint64 SystemClock::now() const
{
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::floor<std::chrono::seconds>(sinceEpoch).count();
}

quint64 SystemClock::tickCount() const
{
    return hostTickCount();
}

void SystemClock::sleep(quint32 milliseconds)
{
    QThread::msleep(milliseconds);
}

void SystemClock::wait(quint32 milliseconds, std::unique_lock<std::mutex>& lock,
    std::condition_variable& wake, const std::function<bool()>& ended)
{
    wake.wait_for(lock, std::chrono::milliseconds(milliseconds), ended);
}

int SystemClock::timerInterval(quint32 milliseconds) const
{
    // A window timer takes any period of 32 bits and none below 10 ms; the event loop takes an int.
    constexpr quint32 shortest = 10;
    constexpr auto longest = static_cast<quint32>(std::numeric_limits<int>::max());
    return static_cast<int>(std::clamp(milliseconds, shortest, longest));
}

} // namespace quoril
