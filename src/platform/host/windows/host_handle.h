#pragma once

#include "platform/windows/win32.h"

#include <QString>

#include <utility>

namespace quoril {

/// A handle of the system that closes itself.
class HostHandle
{
public:
    explicit HostHandle(HANDLE handle) : m_handle(handle) { }
    ~HostHandle()
    {
        if (isOpen())
            ::CloseHandle(m_handle);
    }
    HostHandle(const HostHandle&) = delete;
    HostHandle& operator=(const HostHandle&) = delete;

    bool isOpen() const { return m_handle != INVALID_HANDLE_VALUE; }
    HANDLE get() const { return m_handle; }
    HANDLE release() { return std::exchange(m_handle, INVALID_HANDLE_VALUE); }

private:
    HANDLE m_handle;
};

/// The path as the system's calls take it, of any length. Valid as long as the object.
class HostPath
{
public:
    explicit HostPath(const QString& hostPath);
    const wchar_t* text() const { return reinterpret_cast<const wchar_t*>(m_path.utf16()); }

private:
    QString m_path;
};

/// The error of the call that failed last on this thread, after the name of what it is about.
Error lastHostError(const QString& about);

} // namespace quoril
