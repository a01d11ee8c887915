#include "platform/tree/tree_files.h"

#include "platform/tree/host_error.h"
#include "platform/tree/host_file.h"
#include "platform/tree/tree_paths.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace quoril {

namespace {

Result<std::unique_ptr<QIODevice>> openDevice(const QString& hostPath, int flags, QIODevice::OpenMode mode)
{
    Result<std::unique_ptr<QFile>> file = openRegularFile(hostPath, flags, mode);
    if (!file)
        return file.failure();
    return std::unique_ptr<QIODevice>(*std::move(file));
}

} // namespace

Result<std::unique_ptr<QIODevice>> TreeFiles::openForReading(QStringView path)
{
    const Result<QString> host = m_paths.existing(path);
    if (!host)
        return host.failure();
    return openDevice(*host, O_RDONLY, QIODevice::ReadOnly);
}

Result<std::unique_ptr<QIODevice>> TreeFiles::openForWriting(QStringView path)
{
    const Result<QString> host = m_paths.forCreation(path);
    if (!host)
        return host.failure();
    return openDevice(*host, O_WRONLY | O_CREAT | O_TRUNC, QIODevice::WriteOnly);
}

Status TreeFiles::remove(QStringView path)
{
    const Result<QString> host = m_paths.existing(path);
    if (!host)
        return host.failure();
    if (::unlink(QFile::encodeName(*host).constData()) != 0)
        return errno == EISDIR || errno == EPERM ? Error{error::AccessDenied, {}} : hostError(errno);
    return {};
}

Status TreeFiles::setCurrentDirectory(QStringView path)
{
    return m_paths.setCurrentDirectory(path);
}

} // namespace quoril
