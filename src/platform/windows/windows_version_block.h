#pragma once

#include "formats/error.h"

#include <QString>

namespace quoril {

/// The FileVersion string in the version block of the executable, by the block's first translation. 1812 to
/// 1814 if it has no such block or string; else the error of the call.
Result<QString> windowsFileVersion(const QString& path);

} // namespace quoril
