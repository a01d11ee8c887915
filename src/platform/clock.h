#pragma once

#include <QtGlobal>

#include <condition_variable>
#include <functional>
#include <mutex>

namespace quoril {

/// The machine's time. Everything that waits or looks at the time asks here, so that a test can put its own
/// time in place.
class Clock
{
public:
    virtual ~Clock() = default;

    /// Seconds since 1970-01-01 UTC by the wall clock.
    virtual qint64 now() const = 0;

    /// Milliseconds since the machine's start, the time that it was suspended included; it never goes back.
    virtual quint64 tickCount() const = 0;

    /// Holds the calling thread.
    virtual void sleep(quint32 milliseconds) = 0;

    /// Holds the calling thread for so long, or until `ended` holds, which another thread says by `wake`. The
    /// lock is held when `ended` is asked and afterwards, and given up meanwhile.
    virtual void wait(quint32 milliseconds, std::unique_lock<std::mutex>& lock, std::condition_variable& wake,
        const std::function<bool()>& ended)
        = 0;

    /// The interval, in milliseconds of the event loop, that a window timer of this period is set to.
    virtual int timerInterval(quint32 milliseconds) const = 0;
};

} // namespace quoril
