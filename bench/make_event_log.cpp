// Writes a classic event log of so many events: make_event_log FILE EVENTS
#include "formats/evt_appender.h"

#include <QFile>

#include <cstdio>

using namespace Qt::StringLiterals;
using namespace quoril;

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: make_event_log FILE EVENTS\n");
        return 2;
    }
    QFile file(QFile::decodeName(argv[1]));
    if (!file.open(QIODevice::ReadWrite | QIODevice::Truncate))
        return 1;
    constexpr quint32 MaximumSize = 0x4000'0000;
    auto appender = EvtAppender::open(file, MaximumSize);
    EventEntry entry;
    entry.eventType = event_type::Information;
    entry.sourceName = u"QUORIL Sample"_s;
    entry.computerName = u"HOST"_s;
    entry.insertStrings.append(QString(120, u'x'));
    const int events = QByteArray(argv[2]).toInt();
    for (int i = 0; appender && i < events; ++i) {
        if (!appender->append(entry))
            return 1;
    }
    return appender && appender->finish() ? 0 : 1;
}
