// Any bytes as a block of EVENTLOGRECORDs: decoding stays inside, and what was decoded is encoded alike.

#include "formats/event_log_record.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    quoril::EventRecordBlock block(QByteArrayView(data, qsizetype(size)));
    quoril::EventEntry entry;
    quoril::EventEntry again;
    while (const auto record = block.next()) {
        record->decode(entry);
        QByteArray bytes;
        quoril::appendEventLogRecord(bytes, entry);
        const auto encoded = quoril::EventRecordView::first(bytes);
        if (!encoded || !encoded->isClosed())
            std::abort();
        encoded->decode(again);
        // Only what lay between the strings and the data is not kept.
        again.insertBytes = entry.insertBytes;
        if (!(again == entry))
            std::abort();
    }
    return 0;
}
