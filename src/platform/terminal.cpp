#include "platform/terminal.h"

#include "platform/terminal_text.h"

#include <QList>
#include <QString>

#include <cstdio>

#ifdef Q_OS_WIN
#include <cstdlib>
#include <fcntl.h>
#include <io.h>
#include <windows.h>
#else
#include <unistd.h>
#endif

namespace quoril {

namespace {

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

} // namespace

void say(QStringView text, StandardStream stream)
{
    QString shown;
    for (const QStringView line : text.split(u'\n'))
        shown += (isTerminal(stream) ? terminalText(line) : line.toString()) + u'\n';
    std::fputs(shown.toLocal8Bit().constData(), fileOf(stream));
}

#ifdef Q_OS_WIN

namespace {

UINT g_codePage = 0;

void allowColours(DWORD handleName)
{
    const HANDLE console = GetStdHandle(handleName);
    DWORD mode = 0;
    if (GetConsoleMode(console, &mode))
        SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

} // namespace

bool isTerminal(StandardStream stream)
{
    return _isatty(_fileno(fileOf(stream))) != 0;
}

void prepareStandardStreams()
{
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    g_codePage = GetConsoleOutputCP();
    if (g_codePage != 0 && SetConsoleOutputCP(CP_UTF8))
        std::atexit([] { SetConsoleOutputCP(g_codePage); });
    allowColours(STD_OUTPUT_HANDLE);
    allowColours(STD_ERROR_HANDLE);
}

#else

bool isTerminal(StandardStream stream)
{
    return ::isatty(::fileno(fileOf(stream))) != 0;
}

void prepareStandardStreams() { }

#endif

} // namespace quoril
