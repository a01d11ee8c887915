#include "platform/terminal_host.h"

#include <unistd.h>

namespace quoril {

bool isTerminal(StandardStream stream)
{
    return ::isatty(::fileno(fileOf(stream))) != 0;
}

bool hasStream(StandardStream)
{
    return true; // a closed one loses what is written to it
}

void sayWithoutStream(QStringView, StandardStream) { }

bool writeText(std::FILE* file, const QByteArray& utf8)
{
    const auto size = static_cast<std::size_t>(utf8.size());
    const bool isTaken = std::fwrite(utf8.constData(), 1, size, file) == size;
    return std::fflush(file) == 0 && isTaken;
}

bool prepareStandardStreams()
{
    return true;
}

} // namespace quoril
