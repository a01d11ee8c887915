#include "logs/log_runs.h"
#include "plain_log_reader.h"

#include <QBuffer>

#include <algorithm>
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

    const auto first = plain.messages.begin();
    std::vector<qsizetype> begins = plain.starts;
    if (!plain.messages.empty() && (begins.empty() || begins.front() > 0))
        begins.insert(begins.begin(), 0);
    begins.push_back(qsizetype(plain.messages.size()));
    buffer.seek(0);
    const quoril::LogRange whole = quoril::wholeLog(buffer);
    const auto runs = listRuns(buffer, whole);
    expect(runs.size() == begins.size() - 1);
    expect(!findRunFromEnd(buffer, whole, qsizetype(runs.size())));
    qint64 lines = 0;
    for (std::size_t i = 0; i < runs.size(); ++i) {
        // Each look from the end begins there.
        if (runs.size() - i < 5 || i == 0)
            expect(findRunFromEnd(buffer, whole, qsizetype(runs.size() - 1 - i)) == runs[i].range);
        expect(runs[i].range.begin == plain.messages[std::size_t(begins[i])].place);
        const quoril::LogCounts& counts = runs[i].counts;
        expect(counts.messages == begins[i + 1] - begins[i]);
        for (qint32 level = 1; level <= 3; ++level)
            expect(counts.levels[std::size_t(level)]
                == std::ranges::count(
                    first + begins[i], first + begins[i + 1], level, &PlainLog::Message::level));
        lines += counts.lines;
    }
    const quoril::LogCounts counts = countLog(buffer, whole);
    expect(lines == all.lineCount() && counts.lines == lines && counts.messages == all.GetCount());
    // Lines are numbered through.
    for (qsizetype message = 0, line = 0; message < all.GetCount(); ++message) {
        for (; line < all.firstLineOf(message + 1); ++line)
            expect(all.messageOf(line) == message);
    }
    return 0;
}
