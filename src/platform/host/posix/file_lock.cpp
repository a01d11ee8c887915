#include "platform/host/file_lock.h"

#include "platform/host/host_file.h"
#include "platform/host/posix/host_descriptor.h"
#include "platform/host/posix/host_error.h"
#include "platform/host/posix/host_rights.h"

#include <QFile>

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <sys/file.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

/// The file of a lock, made where it is missing. One that more people could open than may lock is narrowed.
int openLockFile(const HostPlace& place)
{
    constexpr int flags = O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
    const auto folder = static_cast<int>(place.folder.native());
    const QByteArray name = QFile::encodeName(place.name);
    struct stat status = {};
    if (::fstat(folder, &status) != 0)
        return -1;
    const HostRights rights = rightsOfLockIn(status);
    constexpr int tries = 16;
    for (int i = 0; i < tries; ++i) {
        HostDescriptor file(::openat(folder, name.constData(), flags));
        const bool isNew = file.get() < 0 && errno == ENOENT;
        HostDescriptor made(
            isNew ? ::openat(folder, name.constData(), flags | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR) : -1);
        if (made.get() >= 0) {
            giveRights(made.get(), rights);
            return made.release();
        }
        if (isNew && errno == EEXIST)
            continue;
        if (file.get() < 0 || ::fstat(file.get(), &status) != 0)
            return -1;
        if (!S_ISREG(status.st_mode)) {
            errno = EACCES;
            return -1;
        }
        if ((status.st_mode & (S_IRWXG | S_IRWXO) & ~rights.mode) != 0)
            ::fchmod(file.get(), rights.mode);
        return file.release();
    }
    return -1;
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

Result<std::unique_ptr<FileLock>> FileLock::acquire(const HostPlace& place)
{
    using namespace std::chrono_literals;
    HostDescriptor file(openLockFile(place));
    if (file.get() < 0)
        return hostError(errno, place.path());
    const auto end = std::chrono::steady_clock::now() + 20s;
    while (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR)
            return hostError(errno, place.path());
        if (std::chrono::steady_clock::now() > end)
            return Error{error::SharingViolation, place.path() + u" is held by another program"_s};
        std::this_thread::sleep_for(2ms);
    }
    return std::make_unique<FileLock>(file.release());
}

FileLock::~FileLock()
{
    ::close(static_cast<int>(m_file));
}

TryLock::TryLock(const HostPlace& place)
{
    HostDescriptor file(openLockFile(place));
    struct flock whole = wholeFile();
    if (file.get() >= 0 && ::fcntl(file.get(), F_OFD_SETLK, &whole) == 0) {
        m_file = file.release();
        return;
    }
    const bool isTaken = file.get() >= 0 && (errno == EAGAIN || errno == EACCES);
    m_state = isTaken ? Error{error::LockViolation, place.path()} : hostError(errno, place.path());
}

bool TryLock::isTaken(const HostPlace& place)
{
    const auto file = openRegularFile(place, HostOpen::Read);
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

} // namespace quoril
