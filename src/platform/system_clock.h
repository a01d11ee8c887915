#pragma once

#include "platform/clock.h"

namespace quoril {

/// The host's own time.
class SystemClock : public Clock
{
public:
    qint64 now() const override;
    quint64 tickCount() const override;
    void sleep(quint32 milliseconds) override;
    void wait(quint32 milliseconds, std::unique_lock<std::mutex>& lock, std::condition_variable& wake,
        const std::function<bool()>& ended) override;
    int timerInterval(quint32 milliseconds) const override;
};

} // namespace quoril
