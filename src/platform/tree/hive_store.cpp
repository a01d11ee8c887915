#include "platform/tree/hive_store.h"

#include <chrono>

namespace quoril {

Status VolatileHive::change(const Change& apply)
{
    return apply(hive()->root(), currentFiletime());
}

quint64 currentFiletime()
{
    constexpr quint64 unixEpoch = 116444736000000000;
    constexpr quint64 nanosecondsPerUnit = 100;
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    const auto nanoseconds = std::chrono::duration_cast<std::chrono::nanoseconds>(sinceEpoch).count();
    return unixEpoch + static_cast<quint64>(nanoseconds) / nanosecondsPerUnit;
}

} // namespace quoril
