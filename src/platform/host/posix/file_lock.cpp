#include "platform/host/file_lock.h"

#include "platform/host/host_file.h"
#include "platform/host/posix/host_error.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

class Descriptor
{
public:
    explicit Descriptor(int number) : m_number(number) { }
    ~Descriptor()
    {
        if (m_number >= 0)
            ::close(m_number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return m_number; }
    int release() { return std::exchange(m_number, -1); }

private:
    int m_number;
};

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

void takeOwnerAndMode(int descriptor, const QByteArray& of)
{
    struct stat status = {};
    if (::stat(of.constData(), &status) != 0)
        return;
    // Only root may give a file away; for another user the file is his either way.
    if (::fchown(descriptor, status.st_uid, status.st_gid) != 0)
        errno = 0;
    ::fchmod(descriptor, status.st_mode & 07777);
}

/// A write lock of the open file, which unlike one of the process ends with this file alone.
struct flock wholeFile()
{
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    return lock;
}

} // namespace

Result<std::unique_ptr<FileLock>> FileLock::acquire(const QString& fileName)
{
    using namespace std::chrono_literals;
    Descriptor file(
        ::open(QFile::encodeName(fileName).constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (file.get() < 0)
        return changeError(errno, fileName);
    const auto end = std::chrono::steady_clock::now() + 20s;
    while (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR)
            return changeError(errno, fileName);
        if (std::chrono::steady_clock::now() > end)
            return Error{error::SharingViolation, fileName + u" is held by another program"_s};
        std::this_thread::sleep_for(2ms);
    }
    return std::make_unique<FileLock>(file.release());
}

FileLock::~FileLock()
{
    ::close(static_cast<int>(m_file));
}

TryLock::TryLock(const QString& fileName)
{
    Descriptor file(::open(QFile::encodeName(fileName).constData(),
        O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0666));
    struct flock whole = wholeFile();
    if (file.get() >= 0 && ::fcntl(file.get(), F_OFD_SETLK, &whole) == 0) {
        m_file = file.release();
        return;
    }
    const bool isTaken = file.get() >= 0 && (errno == EAGAIN || errno == EACCES);
    m_state = isTaken ? Error{error::LockViolation, fileName} : changeError(errno, fileName);
}

bool TryLock::isTaken(const QString& fileName)
{
    const auto file = openRegularFile(fileName, HostOpen::Read);
    struct flock whole = wholeFile();
    return file && ::fcntl((*file)->handle(), F_OFD_GETLK, &whole) == 0 && whole.l_type != F_UNLCK;
}

Status TryLock::write(const QByteArray& text)
{
    const auto descriptor = static_cast<int>(m_file);
    const auto size = static_cast<std::size_t>(text.size());
    if (::ftruncate(descriptor, 0) == 0
        && ::pwrite(descriptor, text.constData(), size, 0) == static_cast<ssize_t>(size))
        return {};
    return Error{error::DiskFull, {}};
}

void TryLock::release()
{
    if (isHeld())
        ::close(static_cast<int>(std::exchange(m_file, FileLock::None)));
}

Status replaceFile(const QString& fileName, const QByteArray& bytes)
{
    const QFileInfo info(fileName);
    const QString temporary = info.path() + u"/."_s + info.fileName() + u".new"_s;
    const QByteArray hostName = QFile::encodeName(fileName);
    const QByteArray hostTemporary = QFile::encodeName(temporary);
    if (::unlink(hostTemporary.constData()) != 0 && errno != ENOENT)
        return changeError(errno, temporary);
    const Descriptor file(::open(hostTemporary.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (file.get() < 0)
        return changeError(errno, temporary);
    takeOwnerAndMode(file.get(), hostName);
    int failure = writeAll(file.get(), bytes);
    if (failure == 0 && ::rename(hostTemporary.constData(), hostName.constData()) != 0)
        failure = errno;
    if (failure != 0) {
        ::unlink(hostTemporary.constData());
        return changeError(failure, fileName);
    }
    const Descriptor folder(
        ::open(QFile::encodeName(info.path()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    ::fsync(folder.get());
    return {};
}

} // namespace quoril
