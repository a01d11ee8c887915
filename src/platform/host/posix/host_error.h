#pragma once

#include "formats/error.h"

#include <QString>

namespace quoril {

/// The Windows error of a host error number (errno); its text becomes the detail, after the name of what it
/// is about where one is given.
Error hostError(int number, const QString& about = {});

} // namespace quoril
