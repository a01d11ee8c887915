#include "platform/host/host_file.h"

#include "platform/host/posix/host_error.h"

#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quoril {

namespace {

struct OpenWay
{
    int flags;
    QIODevice::OpenMode mode;
};

OpenWay wayOf(HostOpen purpose)
{
    switch (purpose) {
    case HostOpen::Write:
        return {O_WRONLY | O_CREAT | O_TRUNC, QIODevice::WriteOnly};
    case HostOpen::ReadWrite:
        return {O_RDWR | O_CREAT, QIODevice::ReadWrite};
    case HostOpen::Read:
        break;
    }
    return {O_RDONLY, QIODevice::ReadOnly};
}

} // namespace

Result<std::unique_ptr<QFile>> openRegularFile(const QString& hostPath, HostOpen purpose)
{
    const OpenWay way = wayOf(purpose);
    const int descriptor = ::open(
        QFile::encodeName(hostPath).constData(), way.flags | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0666);
    if (descriptor < 0)
        return hostError(errno, hostPath);
    struct stat status = {};
    auto file = std::make_unique<QFile>();
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)
        || !file->open(descriptor, way.mode, QFileDevice::AutoCloseHandle)) {
        ::close(descriptor);
        return Error{error::AccessDenied, hostPath};
    }
    return file;
}

Result<HostFileStamp> stampOf(const QFile& file)
{
    struct stat status = {};
    if (::fstat(file.handle(), &status) != 0)
        return hostError(errno);
    constexpr qint64 nanosecondsPerSecond = 1000000000;
    return HostFileStamp{status.st_dev, status.st_ino, status.st_size,
        status.st_mtim.tv_sec * nanosecondsPerSecond + status.st_mtim.tv_nsec};
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

Status removeHostFile(const QString& hostPath)
{
    if (::unlink(QFile::encodeName(hostPath).constData()) == 0)
        return {};
    return errno == EISDIR || errno == EPERM ? Error{error::AccessDenied, hostPath}
                                             : hostError(errno, hostPath);
}

Status makeHostFolder(const QString& hostPath)
{
    if (::mkdir(QFile::encodeName(hostPath).constData(), 0777) == 0 || errno == EEXIST)
        return {};
    return changeError(errno, hostPath);
}

Status moveHostFile(const QString& from, const QString& to)
{
    const QByteArray target = QFile::encodeName(to);
    return std::rename(QFile::encodeName(from).constData(), target.constData()) == 0
        ? Status()
        : Status(changeError(errno, to));
}

Result<HostEntry> hostEntry(const QString& hostPath)
{
    struct stat status = {};
    if (::lstat(QFile::encodeName(hostPath).constData(), &status) == 0)
        return HostEntry{S_ISLNK(status.st_mode)};
    if (errno == EACCES || errno == ENAMETOOLONG)
        return hostError(errno, hostPath);
    return Error{error::FileNotFound, hostPath};
}

QString realHostPath(const QString& hostPath)
{
    return QFileInfo(hostPath).canonicalFilePath();
}

} // namespace quoril
