// Loads an emulator log, with --last-run as the panel does, as one process, to
// be timed beside `wc -l` of the same file.
#include "logs/quoril_log.h"

#include <QElapsedTimer>
#include <QFile>
#include <QStringList>

#include <cstdio>

int main(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QFile::decodeName(argv[i]));
    const bool lastRun = arguments.removeAll(QStringLiteral("--last-run")) > 0;
    QFile file(arguments.value(0));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        std::fprintf(stderr, "usage: load_emulator_log [--last-run] FILE\n");
        return 1;
    }
    QElapsedTimer timer;
    timer.start();
    quoril::QuorilLog log;
    log.read(file, lastRun ? quoril::QuorilLog::Keep::FromLastStart : quoril::QuorilLog::Keep::All);
    std::printf("%lld messages, %lld lines, %lld ms\n", static_cast<long long>(log.GetCount()),
        static_cast<long long>(log.lineCount()), static_cast<long long>(timer.elapsed()));
    return 0;
}
