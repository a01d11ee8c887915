#include "platform/windows/windows_paths.h"

#include "platform/windows/win32.h"

#include <vector>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

// A folder takes twelve units less than a file.
constexpr qsizetype ShortPathUnits = MAX_PATH - 12;

} // namespace

Result<QString> fullPath(const QString& path)
{
    std::vector<wchar_t> units(MAX_PATH);
    while (true) {
        const DWORD size
            = ::GetFullPathNameW(wide(path), static_cast<DWORD>(units.size()), units.data(), nullptr);
        if (size == 0)
            return lastError();
        if (size < units.size())
            return QString::fromWCharArray(units.data(), static_cast<qsizetype>(size));
        units.resize(size);
    }
}

Result<QString> callPath(QStringView path)
{
    if (path.isEmpty() || hasZeroUnit(path))
        return Error{error::InvalidName, {}};
    const Result<QString> full = fullPath(path.toString());
    if (!full)
        return full.failure();
    if (full->size() < ShortPathUnits || full->startsWith(u"\\\\?\\") || full->startsWith(u"\\\\.\\"))
        return path.size() < ShortPathUnits ? path.toString() : *full;
    return full->startsWith(u"\\\\") ? u"\\\\?\\UNC"_s + full->mid(1) : u"\\\\?\\"_s + *full;
}

Result<KernelHandle> openDiskFile(QStringView path, DWORD access, DWORD disposition)
{
    const Result<QString> name = callPath(path);
    if (!name)
        return name.failure();
    const HANDLE handle = ::CreateFileW(wide(*name), access,
        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, disposition, DiskFileFlags, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return lastError();
    KernelHandle file(handle);
    if (::GetFileType(handle) != FILE_TYPE_DISK)
        return Error{error::AccessDenied, *name};
    return file;
}

} // namespace quoril
