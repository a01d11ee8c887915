#include "platform/terminal.h"

#include "platform/terminal_host.h"
#include "platform/terminal_text.h"

#include <QList>
#include <QString>

namespace quoril {

std::FILE* fileOf(StandardStream stream)
{
    switch (stream) {
    case StandardStream::Input:
        return stdin;
    case StandardStream::Output:
        return stdout;
    case StandardStream::Error:
        break;
    }
    return stderr;
}

void say(QStringView text, StandardStream stream)
{
    if (!hasStream(stream)) {
        sayWithoutStream(text, stream);
        return;
    }
    QString shown;
    for (const QStringView line : text.split(u'\n'))
        shown += (isTerminal(stream) ? terminalText(line) : line.toString()) + u'\n';
    writeText(fileOf(stream), shown.toUtf8());
}

} // namespace quoril
