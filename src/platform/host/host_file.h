#pragma once

#include "formats/error.h"
#include "platform/host/host_folder.h"

#include <QByteArray>
#include <QFile>
#include <QString>

#include <memory>
#include <span>

namespace quoril {

/// Files of the host that hold a tree. Each host implements them in a folder of its own; errors are Windows
/// error numbers on all of them: 5 where the user may not, 19 where the disk is write-protected. What is made
/// gets owner, group and mode of the folder that it lies in, as far as the user may give them, so that
/// whoever has the tree also has what others make in it.

/// What a file is opened for.
enum class HostOpen
{
    Read,
    Write, // made or emptied
    ReadWrite, // made where it is missing
    Append, // the same; every write goes to the end
    NewOwn // made, and is to be missing; stays its maker's, and nobody else may write it
};

/// Opens a file of the host, shared with whoever reads, writes, renames or removes it. Only a regular file is
/// opened: a pipe or device of that name in a hostile tree could hold the program for ever. 5 for anything
/// but a file, and for a symbolic link.
Result<std::unique_ptr<QFile>> openRegularFile(const HostPlace& place, HostOpen purpose);

/// Whether nobody but this user and root can have written the file, by its owner and mode.
bool isOnlyOurs(const QFile& file);

/// Distinguishes one state of a file from another, as far as the host does.
struct HostFileStamp
{
    quint64 device = 0;
    quint64 number = 0; // of the file on the device
    qint64 size = -1; // bytes
    qint64 changed = 0; // units of the host's clock

    friend bool operator==(const HostFileStamp&, const HostFileStamp&) = default;
};
Result<HostFileStamp> stampOf(const QFile& file);
/// The same of what lies under a path, by one call and without opening it.
Result<HostFileStamp> stampAt(const QString& hostPath);
/// Whether the file was changed so long ago that no change since can have left the stamp as it is.
bool isSettled(const HostFileStamp& stamp);

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
Status removeHostFile(const HostPlace& place);

/// Makes a folder; one that is there already is none to make.
Result<HostFolder> makeHostFolder(const HostPlace& place);

/// Removes an empty folder.
Status removeHostFolder(const HostPlace& place);

/// Renames a file within its folder, in place of a file of that name; whoever looks sees the old one or the
/// new one.
Status renameHostFile(const HostPlace& from, const QString& name);

/// Puts the bytes in place of the file by way of a temporary one in its folder, so that whoever looks sees
/// the old content or the new one, after a loss of power too. Owner, group, mode and access list become those
/// of the old file before there is content to see. A temporary file of an earlier try that was cut off is
/// removed; call it under a lock. 112.
Status replaceFile(const HostPlace& place, const QByteArray& bytes);

/// What lies under a name; a symbolic link or junction is not followed.
struct HostEntry
{
    bool isLink = false;
    bool isFolder = false;
    qint64 size = 0; // bytes
};
/// 2 if there is nothing, 5 if it can't be looked at, 123 for a name that the host can't have.
Result<HostEntry> hostEntry(const HostPlace& place);

/// The path without symbolic links and junctions; empty if it leads nowhere.
QString realHostPath(const QString& hostPath);

} // namespace quoril
