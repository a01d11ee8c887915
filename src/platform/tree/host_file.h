#pragma once

#include "formats/error.h"

#include <QFile>
#include <QIODevice>
#include <QString>

#include <memory>

namespace quoril {

/// Opens a file of the host with flags of open(2), for the mode that they stand for. Only a regular file is
/// opened: a pipe or device of that name in a hostile tree could hold the program for ever. Errors as of
/// hostError(), 5 for anything but a file.
Result<std::unique_ptr<QFile>> openRegularFile(const QString& hostPath, int flags, QIODevice::OpenMode mode);

} // namespace quoril
