#pragma once

#include <QByteArrayView>

namespace quoril {

/// Whether the bytes are a Qt binary resource file of which every node, name and data block lies within the
/// bytes. Qt follows the offsets of a registered resource without a look at its end, so nothing else may be
/// registered that comes from outside. Data may be plain or compressed with zlib (`rcc --binary --no-zstd`).
bool isSoundResourceFile(QByteArrayView bytes);

} // namespace quoril
