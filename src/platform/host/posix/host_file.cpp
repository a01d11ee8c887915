#include "platform/host/host_file.h"

#include "platform/host/posix/host_descriptor.h"
#include "platform/host/posix/host_error.h"
#include "platform/host/posix/host_rights.h"

#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr int SafeFlags = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
constexpr qint64 NanosecondsPerSecond = 1000000000;
constexpr mode_t OwnersAlone = S_IRUSR | S_IWUSR;

struct OpenWay
{
    int flags;
    bool makes;
    QIODevice::OpenMode mode;
};

OpenWay wayOf(HostOpen purpose)
{
    switch (purpose) {
    case HostOpen::Write:
        return {O_WRONLY | O_TRUNC, true, QIODevice::WriteOnly};
    case HostOpen::ReadWrite:
        return {O_RDWR, true, QIODevice::ReadWrite};
    case HostOpen::Append:
        return {O_WRONLY | O_APPEND, true, QIODevice::WriteOnly | QIODevice::Append};
    case HostOpen::NewOwn:
        return {O_WRONLY, true, QIODevice::WriteOnly};
    case HostOpen::Read:
        break;
    }
    return {O_RDONLY, false, QIODevice::ReadOnly};
}

/// The time is that of the last change of any kind, which nobody can set back.
HostFileStamp stampIn(const struct stat& status)
{
    return {status.st_dev, status.st_ino, status.st_size,
        status.st_ctim.tv_sec * NanosecondsPerSecond + status.st_ctim.tv_nsec};
}

int folderOf(const HostPlace& place)
{
    return static_cast<int>(place.folder.native());
}

QByteArray nameOf(const HostPlace& place)
{
    return QFile::encodeName(place.name);
}

/// A file that was not there; nobody else sees into it yet.
int makeFile(const HostPlace& place, int flags)
{
    return ::openat(
        folderOf(place), nameOf(place).constData(), flags | O_CREAT | O_EXCL | SafeFlags, OwnersAlone);
}

void giveRightsOfFolder(
    int file, const HostPlace& place, HostRights (*rightsIn)(const struct stat&), bool keepsOwner = false)
{
    struct stat folder = {};
    if (::fstat(folderOf(place), &folder) != 0)
        return;
    HostRights rights = rightsIn(folder);
    if (keepsOwner)
        ::fchmod(file, rights.mode & ~static_cast<mode_t>(S_IWGRP | S_IWOTH));
    else
        giveRights(file, rights);
}

/// Opens the file, or makes it where that is meant; others may make or remove it at the same time.
int openOrMake(const HostPlace& place, HostOpen purpose)
{
    const OpenWay way = wayOf(purpose);
    const QByteArray name = nameOf(place);
    constexpr int tries = 16;
    for (int i = 0; i < tries; ++i) {
        if (purpose != HostOpen::NewOwn) {
            const int found = ::openat(folderOf(place), name.constData(), way.flags | SafeFlags);
            if (found >= 0 || errno != ENOENT || !way.makes)
                return found;
        }
        const int made = makeFile(place, way.flags);
        if (made >= 0)
            giveRightsOfFolder(made, place, rightsOfFileIn, purpose == HostOpen::NewOwn);
        if (made >= 0 || errno != EEXIST || purpose == HostOpen::NewOwn)
            return made;
    }
    return -1;
}

int writeAll(int descriptor, const QByteArray& bytes)
{
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t count
            = ::write(descriptor, bytes.constData() + done, static_cast<std::size_t>(bytes.size() - done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return count < 0 ? errno : ENOSPC;
        done += count;
    }
    return ::fsync(descriptor) == 0 ? 0 : errno;
}

void flushFolder(const HostPlace& place)
{
    const HostDescriptor folder(::openat(folderOf(place), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    ::fsync(folder.get());
}

} // namespace

Result<std::unique_ptr<QFile>> openRegularFile(const HostPlace& place, HostOpen purpose)
{
    HostDescriptor descriptor(openOrMake(place, purpose));
    if (descriptor.get() < 0)
        return hostError(errno, place.path());
    struct stat status = {};
    auto file = std::make_unique<QFile>();
    if (::fstat(descriptor.get(), &status) != 0 || !S_ISREG(status.st_mode)
        || !file->open(descriptor.get(), wayOf(purpose).mode, QFileDevice::AutoCloseHandle))
        return Error{error::AccessDenied, place.path()};
    static_cast<void>(descriptor.release());
    return file;
}

bool isOnlyOurs(const QFile& file)
{
    struct stat status = {};
    // A further name could lead to a file of ours that was written for something else. A file that was
    // replaced since it was opened has no name left.
    return ::fstat(file.handle(), &status) == 0 && (status.st_uid == 0 || status.st_uid == ::geteuid())
        && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0 && status.st_nlink <= 1;
}

Result<HostFileStamp> stampOf(const QFile& file)
{
    struct stat status = {};
    return ::fstat(file.handle(), &status) == 0 ? stampIn(status) : Result<HostFileStamp>(hostError(errno));
}

Result<HostFileStamp> stampAt(const QString& hostPath)
{
    struct stat status = {};
    const bool isThere = ::lstat(QFile::encodeName(hostPath).constData(), &status) == 0;
    return isThere ? stampIn(status) : Result<HostFileStamp>(hostError(errno, hostPath));
}

bool isSettled(const HostFileStamp& stamp)
{
    // More than the coarsest clock of a disk goes on at a time.
    constexpr qint64 longestStep = 3 * NanosecondsPerSecond;
    timespec now = {};
    return ::clock_gettime(CLOCK_REALTIME_COARSE, &now) == 0
        && now.tv_sec * NanosecondsPerSecond + now.tv_nsec - stamp.changed > longestStep;
}

Status readFromStart(QFile& file, std::span<char> bytes)
{
    const int descriptor = file.handle();
    const off_t before = ::lseek(descriptor, 0, SEEK_CUR);
    const auto end = off_t(bytes.size());
    off_t place = 0;
    int failure = 0;
    while (place < end && failure == 0) {
        const off_t data = ::lseek(descriptor, place, SEEK_DATA);
        if (data < 0 && errno == ENXIO)
            break; // nothing but a hole up to the end
        // A file system that knows no holes is read from end to end.
        const off_t hole = data < 0 ? end : ::lseek(descriptor, data, SEEK_HOLE);
        place = std::max(place, data);
        while (place < std::min(end, hole) && failure == 0) {
            const ssize_t got
                = ::pread(descriptor, bytes.data() + place, std::size_t(std::min(end, hole) - place), place);
            if (got == 0)
                place = end;
            else if (got > 0)
                place += got;
            else if (errno != EINTR)
                failure = errno;
        }
    }
    ::lseek(descriptor, before, SEEK_SET);
    return failure == 0 ? Status() : Status(hostError(failure));
}

Status flushToDisk(QFile& file)
{
    return file.flush() && ::fdatasync(file.handle()) == 0 ? Status() : Status(hostError(errno));
}

qint64 copyWithinHost(QFileDevice& from, QFileDevice& to, qint64 bytes)
{
#ifdef Q_OS_LINUX
    if (from.isSequential() || to.isSequential())
        return 0;
    constexpr qint64 MostOfOneCall = 1 << 30;
    const int in = from.handle();
    const int out = to.handle();
    off_t source = from.pos();
    off_t target = to.pos();
    qint64 done = 0;
    while (done < bytes) {
        const auto part = static_cast<std::size_t>(std::min(bytes - done, MostOfOneCall));
        const ssize_t copied = ::copy_file_range(in, &source, out, &target, part, 0);
        if (copied < 0 && errno == EINTR)
            continue;
        if (copied <= 0)
            break;
        done += copied;
    }
    return from.seek(source) && to.seek(target) ? done : 0;
#else
    static_cast<void>(from), static_cast<void>(to), static_cast<void>(bytes);
    return 0;
#endif
}

Status removeHostFile(const HostPlace& place)
{
    if (::unlinkat(folderOf(place), nameOf(place).constData(), 0) == 0)
        return {};
    return hostError(errno, place.path());
}

Result<HostFolder> makeHostFolder(const HostPlace& place)
{
    const bool isNew = ::mkdirat(folderOf(place), nameOf(place).constData(), S_IRWXU) == 0;
    if (!isNew && errno != EEXIST)
        return hostError(errno, place.path());
    Result<HostFolder> made = place.folder.folder(place.name);
    if (made && isNew) {
        const HostDescriptor own(
            ::openat(static_cast<int>(made->native()), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        giveRightsOfFolder(own.get(), place, rightsOfFolderIn);
    }
    return made;
}

Status removeHostFolder(const HostPlace& place)
{
    if (::unlinkat(folderOf(place), nameOf(place).constData(), AT_REMOVEDIR) == 0)
        return {};
    return hostError(errno, place.path());
}

Status renameHostFile(const HostPlace& from, const QString& name)
{
    const int folder = folderOf(from);
    const QByteArray target = QFile::encodeName(name);
    if (::renameat(folder, nameOf(from).constData(), folder, target.constData()) == 0)
        return {};
    return hostError(errno, from.beside(name).path());
}

Status replaceFile(const HostPlace& place, const QByteArray& bytes)
{
    const HostPlace temporary = place.beside(u'.' + place.name + u".new"_s);
    if (Status gone = removeHostFile(temporary); !gone && gone.errorNumber() != error::FileNotFound)
        return gone;
    const HostDescriptor file(makeFile(temporary, O_WRONLY));
    if (file.get() < 0)
        return hostError(errno, temporary.path());
    const HostDescriptor old(::openat(folderOf(place), nameOf(place).constData(), O_RDONLY | SafeFlags));
    if (old.get() >= 0)
        giveRightsOf(file.get(), old.get());
    else
        giveRightsOfFolder(file.get(), place, rightsOfFileIn);
    const int failure = writeAll(file.get(), bytes);
    Status status
        = failure == 0 ? renameHostFile(temporary, place.name) : Status(hostError(failure, place.path()));
    if (status)
        flushFolder(place);
    else
        static_cast<void>(removeHostFile(temporary));
    return status;
}

Result<HostEntry> hostEntry(const HostPlace& place)
{
    struct stat status = {};
    if (::fstatat(folderOf(place), nameOf(place).constData(), &status, AT_SYMLINK_NOFOLLOW) == 0)
        return HostEntry{S_ISLNK(status.st_mode), S_ISDIR(status.st_mode), status.st_size};
    if (errno == EACCES || errno == ENAMETOOLONG)
        return hostError(errno, place.path());
    return Error{error::FileNotFound, place.path()};
}

QString realHostPath(const QString& hostPath)
{
    return QFileInfo(hostPath).canonicalFilePath();
}

} // namespace quoril
