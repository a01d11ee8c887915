// Reads a whole .evtx log with all insert strings, as one process, to be timed beside evtxexport of the same
// file.
#include "formats/evtx_reader.h"

#include <QFile>

#include <cstdio>

int main(int argc, char** argv)
{
    QFile file(QFile::decodeName(argc > 1 ? argv[1] : ""));
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "usage: read_event_log FILE\n");
        return 2;
    }
    auto reader = quoril::EvtxReader::open(file);
    if (!reader)
        return 1;
    quoril::EventEntry entry;
    long long entries = 0;
    long long strings = 0;
    while (reader->next(entry)) {
        ++entries;
        strings += entry.insertStrings.count();
    }
    std::printf("%lld events, %lld insert strings\n", entries, strings);
    return 0;
}
