#pragma once

#include "formats/error.h"

#include <QIODevice>
#include <QString>
#include <QStringList>
#include <QStringView>

#include <limits>
#include <memory>

namespace quoril {

/// How many bytes a reader takes from here on, so that it comes to an end though a program goes on writing as
/// fast as it reads. A device that knows no size is read until it ends.
inline qint64 bytesToRead(const QIODevice& device)
{
    const qint64 left = device.isSequential() ? 0 : device.size() - device.pos();
    return left > 0 ? left : std::numeric_limits<qint64>::max();
}

/// Files under the machine's own paths ("C:\dir\file", either separator, without regard to case).
class Files
{
public:
    virtual ~Files() = default;

    /// The file, open for reading. It is shared with writers and with whoever renames or removes it. 2 or 3
    /// if there is none, 5 if it can't be read, 123 for a text that is no path.
    virtual Result<std::unique_ptr<QIODevice>> openForReading(QStringView path) = 0;

    /// The file, made or emptied, open for writing. 3 if its folder is missing, 5, 19, 123.
    virtual Result<std::unique_ptr<QIODevice>> openForWriting(QStringView path) = 0;

    /// Removes the file; 2 if there is none.
    virtual Status remove(QStringView path) = 0;

    /// The names of the files that the path's last part matches, with * and ? in it, in the
    /// order of the machine's search, which on a tree is by name without regard to case. 2 if there is none;
    /// errors of the folder as in openForReading().
    virtual Result<QStringList> find(QStringView pattern) = 0;

    /// The FileVersion string in the file's version block, by the block's first translation. 1812 to 1814 if
    /// it has no such block or string, 193 if it is no executable; else errors as in openForReading().
    virtual Result<QString> fileVersion(QStringView path) = 0;

    /// Makes the folder the current one of this process's machine paths and of the processes that it creates.
    virtual Status setCurrentDirectory(QStringView path) = 0;

    /// Where the file or folder of that machine path lies for the programs of the host, such as a file
    /// dialog. 2, 3, 5 or 123 if there is none.
    virtual Result<QString> hostPath(QStringView path) const = 0;

    /// The machine's full path of a file of the host; 3 if it lies outside the machine.
    virtual Result<QString> machinePath(const QString& hostPath) const = 0;
};

} // namespace quoril
