#include "logs/log_runs.h"
#include "support/plain_log_reader.h"

#include <QBuffer>

#include <cstdint>
#include <cstdlib>

using quoril::QuorilLog;
using quoril::test::PlainLog;

namespace {

void expect(bool isSo)
{
    if (!isSo)
        std::abort();
}

} // namespace

// Any bytes as an emulator log: what is read forwards, and from the last start mark found from the end, is
// what the plainest reader reads. The last byte tells how often the rest is repeated, so that blocks are
// filled.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0)
        return 0;
    QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size - 1));
    bytes = bytes.repeated(data[size - 1] < 0xF0
            ? 1
            : std::min<qsizetype>(600'000 / std::max<qsizetype>(bytes.size(), 1), data[size - 1] * 16));
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    const PlainLog plain(bytes);
    QuorilLog all;
    all.read(buffer);
    expect(PlainLog::messagesOf(all) == plain.from(0));
    buffer.seek(0);
    QuorilLog run;
    run.read(buffer, QuorilLog::Keep::FromLastStart);
    expect(run.m_last_message == 0);
    expect(PlainLog::messagesOf(run) == plain.from(plain.starts.empty() ? 0 : plain.starts.back()));

    const quoril::LogRange whole{0, bytes.size() / 2 * 2};
    const auto runs = listRuns(buffer, whole);
    expect(runs.empty() == plain.messages.empty());
    qint64 lines = 0;
    for (std::size_t i = 0; i < runs.size(); ++i) {
        expect(findRunFromEnd(buffer, whole, qsizetype(runs.size() - 1 - i)) == runs[i].range);
        lines += runs[i].counts.lines;
    }
    expect(lines == all.lineCount() && countLog(buffer, whole).lines == lines);
    return 0;
}
