#include "platform/host/host_folder.h"

#include "platform/host/posix/host_descriptor.h"
#include "platform/host/posix/host_error.h"

#include <QFile>

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>

namespace quoril {

struct HostFolder::Handle
{
    HostDescriptor descriptor;
};

namespace {

// Only to be gone through: a folder that may not be listed is one all the same.
constexpr int FolderFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;

} // namespace

HostFolder::HostFolder(std::shared_ptr<const Handle> handle, QString path)
    : m_handle(std::move(handle))
    , m_path(std::move(path))
{
}

Result<HostFolder> HostFolder::open(const QString& hostPath)
{
    const int descriptor = ::open(QFile::encodeName(hostPath).constData(), FolderFlags);
    if (descriptor < 0)
        return hostError(errno, hostPath);
    return HostFolder(std::make_shared<Handle>(Handle{HostDescriptor(descriptor)}), hostPath);
}

Result<HostFolder> HostFolder::openStraight(const QString& hostPath)
{
    open_how how = {};
    how.flags = FolderFlags;
    how.resolve = RESOLVE_NO_SYMLINKS;
    const auto descriptor = static_cast<int>(
        ::syscall(SYS_openat2, AT_FDCWD, QFile::encodeName(hostPath).constData(), &how, sizeof how));
    if (descriptor < 0) // an old kernel doesn't know the call, and a guard may forbid what it doesn't know
        return errno == ENOSYS || errno == EPERM ? Error{error::NotSupported, {}}
                                                 : hostError(errno, hostPath);
    return HostFolder(std::make_shared<Handle>(Handle{HostDescriptor(descriptor)}), hostPath);
}

Result<HostFolder> HostFolder::folder(const QString& name) const
{
    QString path = HostPlace{*this, name}.path();
    const int descriptor
        = ::openat(m_handle->descriptor.get(), QFile::encodeName(name).constData(), FolderFlags | O_NOFOLLOW);
    if (descriptor < 0)
        return hostError(errno, path);
    return HostFolder(std::make_shared<Handle>(Handle{HostDescriptor(descriptor)}), std::move(path));
}

QStringList HostFolder::names() const
{
    HostDescriptor own(::openat(m_handle->descriptor.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    DIR* const list = ::fdopendir(own.get());
    if (!list)
        return {};
    static_cast<void>(own.release());
    QStringList names;
    while (const dirent* entry = ::readdir(list)) {
        const QString name = QFile::decodeName(static_cast<const char*>(entry->d_name));
        if (name != u"." && name != u"..")
            names.append(name);
    }
    ::closedir(list);
    names.sort();
    return names;
}

std::intptr_t HostFolder::native() const
{
    return m_handle->descriptor.get();
}

} // namespace quoril
