#include "platform/host/file_lock.h"

#include "platform/host/host_file.h"
#include "platform/host/windows/host_handle.h"

#include <QFileInfo>

#include <chrono>
#include <limits>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

// One byte behind every content: a lock keeps others from reading what it covers.
constexpr DWORD lockedOffset = 0x7FFFFFFF;

OVERLAPPED lockedPlace()
{
    OVERLAPPED place = {};
    place.Offset = lockedOffset;
    return place;
}

HANDLE openLockFile(const QString& fileName, DWORD access, DWORD disposition)
{
    return ::CreateFileW(HostPath(fileName).text(), access,
        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, disposition,
        DiskFileFlags | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
}

bool tryToLock(HANDLE handle)
{
    OVERLAPPED place = lockedPlace();
    return ::LockFileEx(handle, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &place) != 0;
}

HANDLE asHandle(FileLock::Native lock)
{
    return reinterpret_cast<HANDLE>(lock);
}

FileLock::Native asNative(HANDLE handle)
{
    return reinterpret_cast<FileLock::Native>(handle);
}

DWORD writeAll(HANDLE handle, const QByteArray& bytes)
{
    constexpr qsizetype largestPiece = 1 << 24;
    for (qsizetype done = 0; done < bytes.size();) {
        DWORD written = 0;
        const auto size = static_cast<DWORD>(qMin(largestPiece, bytes.size() - done));
        if (!::WriteFile(handle, bytes.constData() + done, size, &written, nullptr))
            return ::GetLastError();
        done += written;
    }
    return ::FlushFileBuffers(handle) ? ERROR_SUCCESS : ::GetLastError();
}

/// The new file's rights become those of the old one.
void takeRights(const QString& from, const QString& to)
{
    DWORD size = 0;
    const HostPath source(from);
    ::GetFileSecurityW(source.text(), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
    QByteArray rights(static_cast<qsizetype>(size), '\0');
    if (size > 0 && ::GetFileSecurityW(source.text(), DACL_SECURITY_INFORMATION, rights.data(), size, &size))
        ::SetFileSecurityW(HostPath(to).text(), DACL_SECURITY_INFORMATION, rights.data());
}

} // namespace

Result<std::unique_ptr<FileLock>> FileLock::acquire(const QString& fileName)
{
    using namespace std::chrono_literals;
    HostHandle file(openLockFile(fileName, GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS));
    if (!file.isOpen())
        return lastChangeError(fileName);
    const auto end = std::chrono::steady_clock::now() + 20s;
    while (!tryToLock(file.get())) {
        if (::GetLastError() != ERROR_LOCK_VIOLATION)
            return lastChangeError(fileName);
        if (std::chrono::steady_clock::now() > end)
            return Error{error::SharingViolation, fileName + u" is held by another program"_s};
        ::Sleep(2);
    }
    return std::make_unique<FileLock>(asNative(file.release()));
}

FileLock::~FileLock()
{
    ::CloseHandle(asHandle(m_file));
}

TryLock::TryLock(const QString& fileName)
{
    HostHandle file(openLockFile(fileName, GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS));
    if (!file.isOpen())
        m_state = lastChangeError(fileName);
    else if (!tryToLock(file.get()))
        m_state = lastChangeError(fileName);
    else
        m_file = asNative(file.release());
}

bool TryLock::isTaken(const QString& fileName)
{
    // The system has no way to ask. Taken for a moment, which a try of somebody else can fall into.
    const HostHandle file(openLockFile(fileName, GENERIC_READ, OPEN_EXISTING));
    return file.isOpen() && !tryToLock(file.get()) && ::GetLastError() == ERROR_LOCK_VIOLATION;
}

Status TryLock::write(const QByteArray& text)
{
    HANDLE file = asHandle(m_file);
    ::SetFilePointer(file, 0, nullptr, FILE_BEGIN);
    if (!::SetEndOfFile(file))
        return lastHostError({});
    const DWORD failure = writeAll(file, text);
    return failure == ERROR_SUCCESS ? Status() : Status(Error{failure, {}});
}

void TryLock::release()
{
    if (isHeld())
        ::CloseHandle(asHandle(std::exchange(m_file, FileLock::None)));
}

Status replaceFile(const QString& fileName, const QByteArray& bytes)
{
    const QFileInfo info(fileName);
    const QString temporary = info.path() + u"/."_s + info.fileName() + u".new"_s;
    const HostPath temporaryPath(temporary);
    if (!::DeleteFileW(temporaryPath.text()) && ::GetLastError() != ERROR_FILE_NOT_FOUND)
        return lastChangeError(temporary);
    DWORD failure = ERROR_SUCCESS;
    {
        const HostHandle file(::CreateFileW(
            temporaryPath.text(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, DiskFileFlags, nullptr));
        if (!file.isOpen())
            return lastChangeError(temporary);
        failure = writeAll(file.get(), bytes);
    }
    takeRights(fileName, temporary);
    Status status
        = failure == ERROR_SUCCESS ? moveHostFile(temporary, fileName) : Status(Error{failure, fileName});
    if (!status)
        ::DeleteFileW(temporaryPath.text());
    return status;
}

} // namespace quoril
