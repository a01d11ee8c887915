#pragma once

#include "schedule/schedule_time.h"

#include <QtGlobal>

namespace quoril::test {

/// In a form that the run-time library of Windows knows too, which reads it only when it is asked to.
inline void useTimeZone(const char* zone)
{
    qputenv("TZ", zone);
    readTimeZone();
}

} // namespace quoril::test
