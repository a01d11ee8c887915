#include "platform/tree/host_file.h"

#include "platform/tree/host_error.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quoril {

Result<std::unique_ptr<QFile>> openRegularFile(const QString& hostPath, int flags, QIODevice::OpenMode mode)
{
    const int descriptor
        = ::open(QFile::encodeName(hostPath).constData(), flags | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0666);
    if (descriptor < 0)
        return hostError(errno, hostPath);
    struct stat status = {};
    auto file = std::make_unique<QFile>();
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)
        || !file->open(descriptor, mode, QFileDevice::AutoCloseHandle)) {
        ::close(descriptor);
        return Error{error::AccessDenied, hostPath};
    }
    return file;
}

} // namespace quoril
