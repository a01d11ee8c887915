#pragma once

#include "formats/regf_image.h"

namespace quoril::regf {

/// The file image of a hive: the base block of `image` with new sequence numbers, time and checksum, and
/// all keys from `root` on in fresh bins. Fails with InvalidParameter when it would grow beyond 2 GB,
/// and with RegistryCorrupt when there is no higher sequence number.
Result<QByteArray> writeHive(const Image& image, const Key& root, quint64 filetime);

} // namespace quoril::regf
