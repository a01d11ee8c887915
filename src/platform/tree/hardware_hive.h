#pragma once

#include "formats/regf_hive.h"

#include <QByteArray>

namespace quoril {

/// The hive HARDWARE with DESCRIPTION\System\CentralProcessor\N for each processor that the text names,
/// which has the form of /proc/cpuinfo. A text without processors gives one whose speed isn't known.
regf::Hive makeHardwareHive(const QByteArray& cpuInfo);

/// What the host says of its processors now, in that form.
QByteArray hostCpuInfo();

} // namespace quoril
