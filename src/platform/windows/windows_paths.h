#pragma once

#include "formats/error.h"

#include <QString>
#include <QStringView>

namespace quoril {

/// The path as the calls take it whatever its length: a long one in its full form behind "\\?\". 123 for a
/// text that is no path.
Result<QString> callPath(QStringView path);

/// The path from its drive on, by the current folder.
Result<QString> fullPath(const QString& path);

} // namespace quoril
