#pragma once

#include "formats/error.h"
#include "platform/host/host_folder.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <memory>
#include <utility>

namespace quoril {

/// A lock between programs, held by an open file. It ends with the object, and with the process. Its file can
/// be opened by those alone who may write the folder: a reader could otherwise hold up all others.
class FileLock
{
public:
    /// Waits a while for whoever holds the lock, then 32. 5 with the file's name for who may not lock, 19.
    static Result<std::unique_ptr<FileLock>> acquire(const HostPlace& place);

    /// The host's handle of an open file, as a number.
    using Native = std::intptr_t;
    static constexpr Native None = -1;
    /// For acquire(): takes over a locked file.
    explicit FileLock(Native file) : m_file(file) { }
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

private:
    Native m_file;
};

/// A lock between programs that is had at once or not at all. It ends with the object, and with the process.
class TryLock
{
public:
    /// Made where there is none. Not held if somebody else holds it or the file can't be made.
    explicit TryLock(const HostPlace& place);
    ~TryLock() { release(); }
    TryLock(TryLock&& other) noexcept
        : m_file(std::exchange(other.m_file, FileLock::None))
        , m_state(std::move(other.m_state))
    {
    }
    TryLock& operator=(TryLock&&) = delete;

    /// Whether anybody holds the lock on the file, as far as this user may look. It is not touched, so
    /// nobody's try fails for it.
    static bool isTaken(const HostPlace& place);

    bool isHeld() const { return m_file != FileLock::None; }
    /// Why it is not held: 33 if somebody else holds it, else what kept the file from being opened: 5, 19.
    Status state() const { return m_state; }
    /// Puts a text in place of the locked file's content, for others to read. 112.
    Status write(const QByteArray& text);
    void release();

private:
    FileLock::Native m_file = FileLock::None;
    Status m_state;
};

} // namespace quoril
