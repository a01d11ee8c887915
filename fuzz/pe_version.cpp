// Any bytes as an executable and as a version block: reading ends within the bytes.

#include "formats/version_block.h"

#include <QBuffer>

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    if (const auto block = quoril::readVersionBlock(buffer))
        static_cast<void>(quoril::fileVersionOf(*block));
    static_cast<void>(quoril::fileVersionOf(bytes));
    return 0;
}
