// Reading whole event logs. With QUORIL_REAL_DATA set, its System.evtx and SysEvent.Evt (unpacked by xz)
// are read; the classic log that the appender writes is always there.

#include "formats/evt_appender.h"
#include "formats/evt_reader.h"
#include "formats/evtx_reader.h"

#include <QBuffer>
#include <QProcess>

#include <benchmark/benchmark.h>

namespace {

using namespace Qt::StringLiterals;
using namespace quoril;

QByteArray realLog(const QString& name)
{
    const QString folder = qEnvironmentVariable("QUORIL_REAL_DATA");
    QProcess unpack;
    unpack.start(u"xz"_s, {u"-dc"_s, folder + u'/' + name});
    return unpack.waitForFinished() ? unpack.readAllStandardOutput() : QByteArray();
}

EventEntry sampleEntry()
{
    EventEntry entry;
    entry.eventType = event_type::Information;
    entry.sourceName = u"QUORIL Sample"_s;
    entry.computerName = u"HOST"_s;
    entry.insertStrings.append(QString(120, u'x'));
    return entry;
}

void append(QIODevice& device, int events, quint32 maximumSize, benchmark::State& state)
{
    auto appender = EvtAppender::open(device, maximumSize);
    const EventEntry entry = sampleEntry();
    for (int i = 0; appender && i < events; ++i) {
        if (!appender->append(entry))
            state.SkipWithError("append failed");
    }
    if (!appender || !appender->finish())
        state.SkipWithError("no log");
}

template <typename Reader> void readLog(benchmark::State& state, QByteArray bytes, const EventSpan& span)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    EventEntry entry;
    qint64 records = 0;
    for ([[maybe_unused]] auto _ : state) {
        auto reader = Reader::open(buffer);
        if (!reader) {
            state.SkipWithError("no log");
            break;
        }
        reader->setSpan(span);
        while (reader->next(entry))
            ++records;
    }
    state.SetItemsProcessed(records);
    state.SetBytesProcessed(state.iterations() * bytes.size());
}

constexpr quint32 LogSize = 4 * 1024 * 1024;

void readAppendedEvt(benchmark::State& state)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadWrite);
    append(buffer, 20'000, LogSize, state);
    readLog<EvtReader>(state, bytes, {});
}
BENCHMARK(readAppendedEvt);

void readRealEvt(benchmark::State& state)
{
    readLog<EvtReader>(state, realLog(u"SysEvent.Evt.xz"_s), {});
}
BENCHMARK(readRealEvt);

void readRealEvtx(benchmark::State& state)
{
    readLog<EvtxReader>(state, realLog(u"System.evtx.xz"_s), {});
}
BENCHMARK(readRealEvtx);

/// A span that no event is in: what skipping costs.
void skipRealEvtx(benchmark::State& state)
{
    readLog<EvtxReader>(state, realLog(u"System.evtx.xz"_s), {0, 15});
}
BENCHMARK(skipRealEvtx);

void appendEvt(benchmark::State& state)
{
    constexpr int Events = 1000;
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadWrite);
    for ([[maybe_unused]] auto _ : state)
        append(buffer, Events, LogSize, state);
    state.SetItemsProcessed(state.iterations() * Events);
}
BENCHMARK(appendEvt);

} // namespace
