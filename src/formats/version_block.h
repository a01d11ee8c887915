#pragma once

#include "formats/error.h"

#include <QByteArray>
#include <QString>

class QIODevice;

namespace quoril {

/// The bytes of the version block (resource type 16, number 1) of an executable or library for 32 or 64 bits.
/// Where it stands in several languages the neutral one is taken, then English, then the first. The device
/// must be random-access. 193 for damage or another kind of file, 1812 to 1814 if there is no such resource.
Result<QByteArray> readVersionBlock(QIODevice& file);

/// The FileVersion string of a version block, by the first pair of its translation table. 1813 if the block
/// has no translation, 1814 if that has no such string, 1812 for damage.
Result<QString> fileVersionOf(const QByteArray& versionBlock);

} // namespace quoril
