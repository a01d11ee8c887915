#pragma once

#include "formats/error.h"

#include <QString>

namespace quoril {

/// The Windows error of a host error number (errno); its text becomes the detail, behind the name of what it
/// is about where one is given.
Error hostError(int number, const QString& about = {});

/// The same of a change: a folder that the user may not write is to him what a write-protected disk is.
Error changeError(int number, const QString& about);

} // namespace quoril
