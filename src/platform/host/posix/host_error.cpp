#include "platform/host/posix/host_error.h"

#include <cerrno>
#include <cstring>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

quint32 windowsNumber(int number)
{
    switch (number) {
    case ENOENT:
        return error::FileNotFound;
    case ENOTDIR:
        return error::PathNotFound;
    case EACCES:
    case EPERM:
    case EISDIR:
    case ELOOP:
        return error::AccessDenied;
    case ENOMEM:
        return error::NotEnoughMemory;
    case EROFS:
        return error::WriteProtect;
    case EEXIST:
        return error::FileExists;
    case ENOSPC:
    case EDQUOT:
        return error::DiskFull;
    case EFBIG:
        return error::FileTooLarge;
    case ENAMETOOLONG:
    case EILSEQ:
        return error::InvalidName;
    case ENOEXEC:
        return error::BadExeFormat;
    case ETXTBSY:
    case EBUSY:
        return error::SharingViolation;
    default:
        return error::WriteFault;
    }
}

} // namespace

Error hostError(int number, const QString& about)
{
    const QString text = QString::fromLocal8Bit(std::strerror(number));
    return {windowsNumber(number), about.isEmpty() ? text : about + u": "_s + text};
}

} // namespace quoril
