// Loads an emulator log as the panel does, as one process, to be timed beside `wc -l` of the same file.
#include "logs/quoril_log.h"

#include <QElapsedTimer>
#include <QFile>

#include <cstdio>

int main(int argc, char** argv)
{
    QFile file(QFile::decodeName(argc > 1 ? argv[1] : ""));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        std::fprintf(stderr, "usage: load_emulator_log FILE\n");
        return 1;
    }
    QElapsedTimer timer;
    timer.start();
    quoril::QuorilLog log;
    log.read(file);
    std::printf("%lld messages, %lld lines, %lld ms\n", static_cast<long long>(log.GetCount()),
        static_cast<long long>(log.lineCount()), static_cast<long long>(timer.elapsed()));
    return 0;
}
