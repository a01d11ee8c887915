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
    int timerInterval(quint32 milliseconds) const override;
};

} // namespace quoril
