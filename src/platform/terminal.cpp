#include "platform/terminal.h"

#include "platform/terminal_host.h"
#include "platform/terminal_text.h"

#include <QList>
#include <QSet>
#include <QString>

#include <mutex>

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

void sayOnce(const QString& text)
{
    static std::mutex mutex;
    static QSet<QString> said;
    {
        const std::lock_guard lock(mutex);
        if (said.contains(text))
            return;
        said.insert(text);
    }
    say(text);
}

} // namespace quoril
