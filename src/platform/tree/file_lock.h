#pragma once

#include "formats/error.h"

#include <QByteArray>
#include <QString>

#include <memory>

namespace quoril {

/// A lock between programs, held by an open file. It ends with the object, and with the process.
class FileLock
{
public:
    /// Waits a while for whoever holds the lock, then 32. 19 where the file can't be made.
    static Result<std::unique_ptr<FileLock>> acquire(const QString& fileName);

    /// For acquire(): takes over a locked file descriptor.
    explicit FileLock(int descriptor) : m_descriptor(descriptor) { }
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

private:
    int m_descriptor;
};

/// Puts the bytes in place of the file by way of a temporary one in its folder, so that whoever looks sees
/// the old content or the new one, after a loss of power too. Owner and mode stay as they were; a new file
/// gets the mode of the program. A temporary file of an earlier try that was cut off is removed; call it
/// under a lock. 19 where the folder can't be written, 112.
Status replaceFile(const QString& fileName, const QByteArray& bytes);

} // namespace quoril
