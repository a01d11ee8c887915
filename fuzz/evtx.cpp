// Any bytes as an event log: reading ends and stays inside.

#include "formats/evtx_reader.h"

#include <QBuffer>

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // The file header is four kilobytes of which the magic alone is looked at.
    constexpr qsizetype FileHeaderSize = 4096;
    QByteArray bytes("ElfFile\0", 8);
    bytes.append(FileHeaderSize - bytes.size(), '\0');
    bytes.append(reinterpret_cast<const char*>(data), qsizetype(size));
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    auto reader = quoril::EvtxReader::open(buffer);
    quoril::EventEntry entry;
    while (reader && reader->next(entry)) { }
    return 0;
}
