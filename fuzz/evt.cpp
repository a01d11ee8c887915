// Any bytes as a classic event log: reading ends, and an append to what can be opened can be read.

#include "formats/evt_appender.h"
#include "formats/evt_reader.h"

#include <QBuffer>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadWrite);
    quoril::EventEntry entry;
    if (auto reader = quoril::EvtReader::open(buffer)) {
        while (reader->next(entry)) { }
    }
    auto appender = quoril::EvtAppender::open(buffer, quoril::EvtAppender::Granularity);
    entry = {};
    entry.sourceName = QStringLiteral("fuzz");
    if (!appender || !appender->append(entry) || !appender->finish())
        return 0;
    auto reader = quoril::EvtReader::open(buffer);
    if (!reader)
        std::abort();
    bool found = false;
    while (reader->next(entry))
        found = entry.sourceName == QStringLiteral("fuzz");
    if (!found)
        std::abort();
    return 0;
}
