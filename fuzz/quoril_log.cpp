#include "logs/quoril_log.h"

#include <QBuffer>

#include <cstdint>
#include <cstdlib>

using quoril::QuorilLog;

// Any bytes as an emulator log: every message and line that is counted can be read, and what is kept from the
// last start mark on is the end of the whole.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QuorilLog all;
    all.read(buffer);
    buffer.seek(0);
    QuorilLog run;
    run.read(buffer, QuorilLog::Keep::FromLastStart);
    if (all.GetCount() - all.m_last_message != run.GetCount() - run.m_last_message)
        std::abort();
    qsizetype lines = 0;
    for (qsizetype i = 0; i < all.GetCount(); ++i) {
        const quoril::QuorilLogMessage message = all.GetMessage(i);
        lines += message.GetLineCount();
        if (message.GetLineCount() < 1 || message.m_level < 1 || message.m_level > 3)
            std::abort();
    }
    if (lines != all.lineCount())
        std::abort();
    return 0;
}
