#pragma once

#include "platform/windows/win32.h"

#include <QString>
#include <QStringView>

namespace quoril {

/// The path as the calls take it whatever its length: a long one in its full form after "\\?\". 123 for a
/// text that is no path.
Result<QString> callPath(QStringView path);

/// The path from its drive on, by the current folder.
Result<QString> fullPath(const QString& path);

/// Opens or makes a file, shared with whoever reads, writes, renames or removes it. 5 for anything that is no
/// file of a disk: reading a device or a pipe could last for ever, and what serves a pipe may not act in this
/// program's name.
Result<KernelHandle> openDiskFile(QStringView path, DWORD access, DWORD disposition);

} // namespace quoril
