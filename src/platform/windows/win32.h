#pragma once

// The platform's own headers, without the macros that get in the way.
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>

#include "formats/error.h"

#include <QString>
#include <QStringView>

#include <memory>
#include <type_traits>

namespace quoril {

/// The units of a text, as calls of the platform take them. The text must end in a zero unit, as a QString
/// does.
inline const wchar_t* wide(const QString& text)
{
    return reinterpret_cast<const wchar_t*>(text.utf16());
}

/// The same, null for an empty text.
inline const wchar_t* wideOrNull(const QString& text)
{
    return text.isEmpty() ? nullptr : wide(text);
}

/// A text up to its zero unit; empty for null.
inline QString textOf(const wchar_t* units)
{
    return units ? QString::fromWCharArray(units) : QString();
}

/// Whether the platform would see less of the text than there is.
inline bool hasZeroUnit(QStringView text)
{
    return text.contains(QChar(u'\0'));
}

/// The calling thread's last error. A call that failed without setting one gives 31, a general failure.
inline Error lastError()
{
    const DWORD number = ::GetLastError();
    return Error{number == ERROR_SUCCESS ? quint32(ERROR_GEN_FAILURE) : quint32(number), {}};
}

/// Success, or the error number that a call gave back.
inline Status statusOf(LSTATUS number)
{
    return number == ERROR_SUCCESS ? Status() : Status(Error{static_cast<quint32>(number), {}});
}

/// Success, or the last error.
inline Status statusOfCall(BOOL succeeded)
{
    return succeeded ? Status() : Status(lastError());
}

/// What a file is opened with: what serves a pipe of that name learns who asks, and may not act as him.
inline constexpr DWORD DiskFileFlags
    = FILE_ATTRIBUTE_NORMAL | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION;

/// Owns a handle that the function closes.
template <auto close> struct HandleCloser
{
    template <typename Handle> void operator()(Handle handle) const { close(handle); }
};
template <typename Handle, auto close>
using OwnedHandle = std::unique_ptr<std::remove_pointer_t<Handle>, HandleCloser<close>>;

using KernelHandle = OwnedHandle<HANDLE, ::CloseHandle>;

/// A function of a loaded module, looked up by its name; null where the system has none.
template <typename Function> Function* systemFunction(const wchar_t* module, const char* name)
{
    const HMODULE loaded = ::GetModuleHandleW(module);
    const FARPROC found = loaded ? ::GetProcAddress(loaded, name) : nullptr;
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(found));
}

} // namespace quoril
