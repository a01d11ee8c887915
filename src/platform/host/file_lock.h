#pragma once

#include "formats/error.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <memory>
#include <utility>

namespace quoril {

/// A lock between programs, held by an open file. It ends with the object, and with the process.
class FileLock
{
public:
    /// Waits a while for whoever holds the lock, then 32. 19 where the file can't be made.
    static Result<std::unique_ptr<FileLock>> acquire(const QString& fileName);

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
    explicit TryLock(const QString& fileName);
    ~TryLock() { release(); }
    TryLock(TryLock&& other) noexcept
        : m_file(std::exchange(other.m_file, FileLock::None))
        , m_state(std::move(other.m_state))
    {
    }
    TryLock& operator=(TryLock&&) = delete;

    /// Whether anybody holds the lock on the file. It is not touched, so nobody's try fails for it.
    static bool isTaken(const QString& fileName);

    bool isHeld() const { return m_file != FileLock::None; }
    /// Why it is not held: 33 if somebody else holds it, else what kept the file from being opened, 19 where
    /// it can't be written.
    Status state() const { return m_state; }
    /// Puts a text in place of the locked file's content, for others to read. 112.
    Status write(const QByteArray& text);
    void release();

private:
    FileLock::Native m_file = FileLock::None;
    Status m_state;
};

/// Puts the bytes in place of the file by way of a temporary one in its folder, so that whoever looks sees
/// the old content or the new one, after a loss of power too. Owner and mode stay as they were; a new file
/// gets the mode of the program. A temporary file of an earlier try that was cut off is removed; call it
/// under a lock. 19 where the folder can't be written, 112.
Status replaceFile(const QString& fileName, const QByteArray& bytes);

} // namespace quoril
