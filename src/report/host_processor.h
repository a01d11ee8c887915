#pragma once

#include <QString>

namespace quoril {

struct ProcessorInfo;

/// The first processor's speed by the registry, in MHz to the nearest hundred; 0 if it isn't known.
qint32 readCpuSpeed();

/// The line "Host CPU: ...": name, vendor and identifier by the registry with the speed in MHz, or what the
/// record says if the registry's key can't be opened.
QString describeProcessor(const ProcessorInfo& processors, qint32 cpuSpeed);

} // namespace quoril
