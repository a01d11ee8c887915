// Runs a fuzz target over the files of a folder, once each: the kept corpus as a normal test.

#include <QByteArray>
#include <QDirIterator>
#include <QFile>

#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv)
{
    int executed = 0;
    for (int i = 1; i < argc; ++i) {
        QDirIterator files(QString::fromLocal8Bit(argv[i]), QDir::Files);
        while (files.hasNext()) {
            QFile file(files.next());
            if (!file.open(QIODevice::ReadOnly))
                return 1;
            const QByteArray bytes = file.readAll();
            LLVMFuzzerTestOneInput(
                reinterpret_cast<const std::uint8_t*>(bytes.constData()), std::size_t(bytes.size()));
            ++executed;
        }
    }
    std::printf("%d inputs executed\n", executed);
    return executed > 0 ? 0 : 1;
}
