#include "platform/windows/windows_files.h"

#include "platform/windows/file_device.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_paths.h"
#include "platform/windows/windows_version_block.h"

#include <QDir>

namespace quoril {

namespace {

using SearchHandle = OwnedHandle<HANDLE, ::FindClose>;

/// Opens or makes the file and gives a device over it.
Result<std::unique_ptr<QIODevice>> openFile(
    QStringView path, DWORD access, DWORD disposition, QIODevice::OpenMode mode)
{
    Result<KernelHandle> file = openDiskFile(path, access, disposition);
    if (!file)
        return file.failure();
    return std::unique_ptr<QIODevice>(std::make_unique<FileDevice>(*std::move(file), mode));
}

} // namespace

Result<std::unique_ptr<QIODevice>> WindowsFiles::openForReading(QStringView path)
{
    return openFile(path, GENERIC_READ, OPEN_EXISTING, QIODevice::ReadOnly);
}

Result<std::unique_ptr<QIODevice>> WindowsFiles::openForWriting(QStringView path)
{
    return openFile(path, GENERIC_WRITE, CREATE_ALWAYS, QIODevice::WriteOnly);
}

Status WindowsFiles::remove(QStringView path)
{
    const Result<QString> name = callPath(path);
    return name ? statusOfCall(::DeleteFileW(wide(*name))) : Status(name.failure());
}

Result<QStringList> WindowsFiles::find(QStringView pattern)
{
    const Result<QString> name = callPath(pattern);
    if (!name)
        return name.failure();
    WIN32_FIND_DATAW found = {};
    const HANDLE handle = ::FindFirstFileW(wide(*name), &found);
    if (handle == INVALID_HANDLE_VALUE)
        return lastError();
    const SearchHandle search(handle);
    QStringList names;
    do {
        if (!(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY))
            names.append(textOf(found.cFileName));
    } while (::FindNextFileW(search.get(), &found));
    if (::GetLastError() != ERROR_NO_MORE_FILES)
        return lastError();
    return names.isEmpty() ? Result<QStringList>(Error{error::FileNotFound, {}}) : names;
}

Result<QString> WindowsFiles::fileVersion(QStringView path)
{
    const Result<QString> name = callPath(path);
    if (!name)
        return name;
    // The call itself would open whatever the name leads to.
    const Result<KernelHandle> file = openDiskFile(path, GENERIC_READ, OPEN_EXISTING);
    return file ? windowsFileVersion(*name) : Result<QString>(file.failure());
}

Status WindowsFiles::setCurrentDirectory(QStringView path)
{
    if (path.isEmpty() || hasZeroUnit(path))
        return Error{error::InvalidName, {}};
    return statusOfCall(::SetCurrentDirectoryW(wide(path.toString())));
}

Result<QString> WindowsFiles::hostPath(QStringView path) const
{
    const Result<QString> name = callPath(path);
    if (!name)
        return name.failure();
    if (::GetFileAttributesW(wide(*name)) == INVALID_FILE_ATTRIBUTES)
        return lastError();
    const Result<QString> full = fullPath(path.toString());
    return full ? QDir::fromNativeSeparators(*full) : full;
}

Result<QString> WindowsFiles::machinePath(const QString& hostPath) const
{
    return fullPath(QDir::toNativeSeparators(hostPath));
}

} // namespace quoril
