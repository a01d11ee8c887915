#include "platform/terminal_host.h"
#include "platform/terminal_text.h"
#include "platform/windows/win32.h"

#include <QList>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <io.h>
#include <optional>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr DWORD MostUnitsOfOneWrite = 8192;

HANDLE handleOf(StandardStream stream)
{
    switch (stream) {
    case StandardStream::Input:
        return ::GetStdHandle(STD_INPUT_HANDLE);
    case StandardStream::Output:
        return ::GetStdHandle(STD_OUTPUT_HANDLE);
    case StandardStream::Error:
        break;
    }
    return ::GetStdHandle(STD_ERROR_HANDLE);
}

/// NUL and a serial port are character devices as well, and neither shows anything to anybody.
bool isConsole(HANDLE handle)
{
    DWORD mode = 0;
    return ::GetConsoleMode(handle, &mode) != FALSE;
}

/// In the console's own units: its code page stays what the user has chosen.
bool writeToConsole(HANDLE console, const QString& text)
{
    for (qsizetype done = 0; done < text.size();) {
        qsizetype size = std::min<qsizetype>(text.size() - done, MostUnitsOfOneWrite);
        if (done + size < text.size() && text[done + size - 1].isHighSurrogate())
            --size; // both halves go together
        DWORD written = 0;
        if (!::WriteConsoleW(console, wide(text) + done, static_cast<DWORD>(size), &written, nullptr)
            || written == 0)
            return false;
        done += written;
    }
    return true;
}

/// A console's mode as it was, put back once.
struct ConsoleMode
{
    HANDLE console = nullptr;
    DWORD mode = 0;
};
std::array<std::optional<ConsoleMode>, 2> g_modes;

void restoreModes()
{
    for (const auto& each : g_modes)
        if (each)
            ::SetConsoleMode(each->console, each->mode);
}

BOOL WINAPI restoreAtEnd(DWORD)
{
    restoreModes();
    return FALSE; // what ends the process goes on
}

/// True also for what is no console.
bool allowColours(HANDLE handle, std::optional<ConsoleMode>& before)
{
    DWORD mode = 0;
    if (!::GetConsoleMode(handle, &mode) || (mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0)
        return true;
    before = {handle, mode};
    if (::SetConsoleMode(handle, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING))
        return true;
    before.reset();
    return false;
}

bool hasWindows()
{
    const auto* const image = reinterpret_cast<const BYTE*>(::GetModuleHandleW(nullptr));
    const auto* const head = reinterpret_cast<const IMAGE_DOS_HEADER*>(image);
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(image + head->e_lfanew);
    return headers->OptionalHeader.Subsystem == IMAGE_SUBSYSTEM_WINDOWS_GUI;
}

/// A service or a task that runs with nobody logged on has windows that nobody ever sees or closes.
bool isBoxSeen()
{
    USEROBJECTFLAGS flags = {};
    return hasWindows()
        && ::GetUserObjectInformationW(::GetProcessWindowStation(), UOI_FLAGS, &flags, sizeof flags, nullptr)
        && (flags.dwFlags & WSF_VISIBLE) != 0;
}

} // namespace

bool isTerminal(StandardStream stream)
{
    return isConsole(handleOf(stream));
}

bool hasStream(StandardStream stream)
{
    const HANDLE handle = handleOf(stream);
    return handle && handle != INVALID_HANDLE_VALUE && ::GetFileType(handle) != FILE_TYPE_UNKNOWN;
}

void sayWithoutStream(QStringView text, StandardStream stream)
{
    if (::AttachConsole(ATTACH_PARENT_PROCESS)) {
        const KernelHandle console(::CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE,
            FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr));
        QString shown;
        for (const QStringView line : text.split(u'\n'))
            shown += terminalText(line) + u"\r\n"_s;
        const bool isSaid = writeToConsole(console.get(), shown);
        ::FreeConsole();
        if (isSaid)
            return;
    }
    if (!isBoxSeen())
        return;
    const UINT icon = stream == StandardStream::Error ? MB_ICONWARNING : MB_ICONINFORMATION;
    ::MessageBoxW(
        nullptr, wide(shownText(text)), L"Quoril Services Manager", MB_OK | MB_SETFOREGROUND | icon);
}

bool writeText(std::FILE* file, const QByteArray& utf8)
{
    const auto console = reinterpret_cast<HANDLE>(::_get_osfhandle(::_fileno(file)));
    if (isConsole(console))
        return std::fflush(file) == 0 && writeToConsole(console, QString::fromUtf8(utf8));
    const auto size = static_cast<std::size_t>(utf8.size());
    const bool isTaken = std::fwrite(utf8.constData(), 1, size, file) == size;
    return std::fflush(file) == 0 && isTaken;
}

bool prepareStandardStreams()
{
    ::_setmode(::_fileno(stdout), _O_BINARY);
    ::_setmode(::_fileno(stderr), _O_BINARY);
    const bool isUnderstood = allowColours(handleOf(StandardStream::Output), g_modes[0])
        & allowColours(handleOf(StandardStream::Error), g_modes[1]);
    if (g_modes[0] || g_modes[1]) {
        std::atexit(restoreModes);
        ::SetConsoleCtrlHandler(restoreAtEnd, TRUE);
    }
    return isUnderstood;
}

} // namespace quoril
