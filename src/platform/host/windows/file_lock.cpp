#include "platform/host/file_lock.h"

#include "platform/host/windows/host_handle.h"

#include <chrono>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

// One byte beyond every content: a lock keeps others from reading what it covers.
constexpr DWORD lockedOffset = 0x7FFFFFFF;

OVERLAPPED lockedPlace()
{
    OVERLAPPED place = {};
    place.Offset = lockedOffset;
    return place;
}

HANDLE openLockFile(const HostPlace& place, DWORD access, DWORD disposition)
{
    return ::CreateFileW(HostPath(place.path()).text(), access,
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

} // namespace

Result<std::unique_ptr<FileLock>> FileLock::acquire(const HostPlace& place)
{
    using namespace std::chrono_literals;
    HostHandle file(openLockFile(place, GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS));
    if (!file.isOpen())
        return lastHostError(place.path());
    const auto end = std::chrono::steady_clock::now() + 20s;
    while (!tryToLock(file.get())) {
        if (::GetLastError() != ERROR_LOCK_VIOLATION)
            return lastHostError(place.path());
        if (std::chrono::steady_clock::now() > end)
            return Error{error::SharingViolation, place.path() + u" is held by another program"_s};
        ::Sleep(2);
    }
    return std::make_unique<FileLock>(asNative(file.release()));
}

FileLock::~FileLock()
{
    ::CloseHandle(asHandle(m_file));
}

TryLock::TryLock(const HostPlace& place)
{
    HostHandle file(openLockFile(place, GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS));
    if (!file.isOpen())
        m_state = lastHostError(place.path());
    else if (!tryToLock(file.get()))
        m_state = lastHostError(place.path());
    else
        m_file = asNative(file.release());
}

bool TryLock::isTaken(const HostPlace& place)
{
    // The system has no way to ask. Taken for a moment, which a try of somebody else can fall into.
    const HostHandle file(openLockFile(place, GENERIC_READ, OPEN_EXISTING));
    return file.isOpen() && !tryToLock(file.get()) && ::GetLastError() == ERROR_LOCK_VIOLATION;
}

Status TryLock::write(const QByteArray& text)
{
    HANDLE file = asHandle(m_file);
    ::SetFilePointer(file, 0, nullptr, FILE_BEGIN);
    if (!::SetEndOfFile(file))
        return lastHostError({});
    DWORD written = 0;
    const auto size = static_cast<DWORD>(text.size());
    return ::WriteFile(file, text.constData(), size, &written, nullptr) ? Status()
                                                                        : Status(lastHostError({}));
}

void TryLock::release()
{
    if (isHeld())
        ::CloseHandle(asHandle(std::exchange(m_file, FileLock::None)));
}

} // namespace quoril
