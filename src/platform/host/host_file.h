#pragma once

#include "formats/error.h"

#include <QByteArray>
#include <QFile>
#include <QString>

#include <memory>
#include <span>

namespace quoril {

/// Files of the host that hold a tree. Each host implements them in a folder of its own; errors are Windows
/// error numbers on all of them.

/// What a file is opened for.
enum class HostOpen
{
    Read,
    Write, // made or emptied
    ReadWrite // made where it is missing
};

/// Opens a file of the host, shared with whoever reads, writes, renames or removes it. Only a regular file is
/// opened: a pipe or device of that name in a hostile tree could hold the program for ever. 5 for anything
/// but a file, and for a symbolic link.
Result<std::unique_ptr<QFile>> openRegularFile(const QString& hostPath, HostOpen purpose);

/// Tells one state of a file from another, as far as the host tells them.
struct HostFileStamp
{
    quint64 device = 0;
    quint64 number = 0; // of the file on the device
    qint64 size = -1; // bytes
    qint64 changed = 0; // units of the host's clock

    friend bool operator==(const HostFileStamp&, const HostFileStamp&) = default;
};
Result<HostFileStamp> stampOf(const QFile& file);

/// Reads the beginning of the file into `bytes`, which hold zeros: as many as the file has. What lies in a
/// hole of the file isn't touched. The file's own position stays.
Status readFromStart(QFile& file, std::span<char> bytes);

/// Has what was written to the file reach the disk.
Status flushToDisk(QFile& file);

/// Has the host copy bytes from the place where one file stands to that of another, without passing them
/// through this program, and moves both places on. How many it copied; fewer, or none, where the host can't.
/// Neither file may have anything in a buffer.
qint64 copyWithinHost(QFileDevice& from, QFileDevice& to, qint64 bytes);

/// Removes a file, not a folder.
Status removeHostFile(const QString& hostPath);

/// Makes a folder; one that is there already is none to make. 19 where the folder above can't be written.
Status makeHostFolder(const QString& hostPath);

/// Renames a file or folder, in place of a file of that name; whoever looks sees the old one or the new one.
Status moveHostFile(const QString& from, const QString& to);

/// What lies under a path; a symbolic link or junction is not followed.
struct HostEntry
{
    bool isLink = false;
};
/// 2 if there is nothing, 5 if it can't be looked at, 123 for a name that the host can't have.
Result<HostEntry> hostEntry(const QString& hostPath);

/// The path without symbolic links and junctions; empty if it leads nowhere.
QString realHostPath(const QString& hostPath);

} // namespace quoril
