#pragma once

#include "platform/system_info.h"

#include <QString>

namespace quoril {

/// The operating system's name with its edition, service pack and build; "Unknown Product" if its version
/// couldn't be had.
QString DescribeOperatingSystem(const Result<SystemVersion>& version);

} // namespace quoril
