#include "platform/host/host_file.h"

#include "platform/host/windows/host_handle.h"

#include <QDir>

#include <array>
#include <cstdint>
#include <fcntl.h>
#include <io.h>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

struct OpenWay
{
    DWORD access;
    DWORD disposition;
    int flags;
    QIODevice::OpenMode mode;
};

OpenWay wayOf(HostOpen purpose)
{
    switch (purpose) {
    case HostOpen::Write:
        return {GENERIC_WRITE, OPEN_ALWAYS, _O_BINARY, QIODevice::WriteOnly};
    case HostOpen::Append:
        return {
            FILE_APPEND_DATA, OPEN_ALWAYS, _O_BINARY | _O_APPEND, QIODevice::WriteOnly | QIODevice::Append};
    case HostOpen::NewOwn:
        return {GENERIC_WRITE, CREATE_NEW, _O_BINARY, QIODevice::WriteOnly};
    case HostOpen::ReadWrite:
        return {GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS, _O_BINARY, QIODevice::ReadWrite};
    case HostOpen::Read:
        break;
    }
    return {GENERIC_READ, OPEN_EXISTING, _O_BINARY | _O_RDONLY, QIODevice::ReadOnly};
}

/// Neither a device nor a pipe, folder or link.
bool isRegularFile(HANDLE handle)
{
    BY_HANDLE_FILE_INFORMATION information = {};
    constexpr DWORD others = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DEVICE;
    return ::GetFileType(handle) == FILE_TYPE_DISK && ::GetFileInformationByHandle(handle, &information)
        && (information.dwFileAttributes & others) == 0;
}

HANDLE handleOf(const QFile& file)
{
    return reinterpret_cast<HANDLE>(::_get_osfhandle(file.handle()));
}

quint64 joined(DWORD high, DWORD low)
{
    return quint64(high) << 32 | low;
}

DWORD writeAll(HANDLE handle, const QByteArray& bytes)
{
    constexpr qsizetype largestPiece = 1 << 24;
    for (qsizetype done = 0; done < bytes.size();) {
        DWORD written = 0;
        const auto size = static_cast<DWORD>(qMin(largestPiece, bytes.size() - done));
        if (!::WriteFile(handle, bytes.constData() + done, size, &written, nullptr))
            return ::GetLastError();
        done += written;
    }
    return ::FlushFileBuffers(handle) ? ERROR_SUCCESS : ::GetLastError();
}

/// The new file's rights become those of the old one.
void takeRights(const QString& from, const QString& to)
{
    DWORD size = 0;
    const HostPath source(from);
    ::GetFileSecurityW(source.text(), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
    QByteArray rights(static_cast<qsizetype>(size), '\0');
    if (size > 0 && ::GetFileSecurityW(source.text(), DACL_SECURITY_INFORMATION, rights.data(), size, &size))
        ::SetFileSecurityW(HostPath(to).text(), DACL_SECURITY_INFORMATION, rights.data());
}

} // namespace

HostPath::HostPath(const QString& hostPath) : m_path(QDir::toNativeSeparators(QDir::cleanPath(hostPath)))
{
    const bool hasDrive = m_path.size() > 2 && m_path[1] == u':' && m_path[2] == u'\\';
    const bool isShare
        = m_path.startsWith(u"\\\\") && m_path.size() > 2 && m_path[2] != u'?' && m_path[2] != u'.';
    if (hasDrive)
        m_path.prepend(u"\\\\?\\"_s);
    else if (isShare)
        m_path.replace(0, 1, u"\\\\?\\UNC"_s);
}

Error lastHostError(const QString& about)
{
    return {::GetLastError(), about};
}

Result<std::unique_ptr<QFile>> openRegularFile(const HostPlace& place, HostOpen purpose)
{
    const QString hostPath = place.path();
    const OpenWay way = wayOf(purpose);
    HostHandle handle(::CreateFileW(HostPath(hostPath).text(), way.access, shareAll, nullptr, way.disposition,
        DiskFileFlags | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    if (!handle.isOpen())
        return lastHostError(hostPath);
    if (!isRegularFile(handle.get()))
        return Error{error::AccessDenied, hostPath};
    // Not before it is known to be a file, and with its attributes kept.
    if (purpose == HostOpen::Write && !::SetEndOfFile(handle.get()))
        return lastHostError(hostPath);
    const int descriptor = ::_open_osfhandle(reinterpret_cast<std::intptr_t>(handle.get()), way.flags);
    if (descriptor < 0)
        return Error{error::NotEnoughMemory, hostPath};
    static_cast<void>(handle.release());
    auto file = std::make_unique<QFile>();
    if (file->open(descriptor, way.mode, QFileDevice::AutoCloseHandle))
        return file;
    ::_close(descriptor);
    return Error{error::AccessDenied, hostPath};
}

/// Rights are inherited here, and no program of a tree runs that a file could name.
bool isOnlyOurs(const QFile&)
{
    return true;
}

Result<HostFileStamp> stampOf(const QFile& file)
{
    BY_HANDLE_FILE_INFORMATION is = {};
    if (!::GetFileInformationByHandle(handleOf(file), &is))
        return lastHostError({});
    const FILETIME changed = is.ftLastWriteTime;
    return HostFileStamp{is.dwVolumeSerialNumber, joined(is.nFileIndexHigh, is.nFileIndexLow),
        static_cast<qint64>(joined(is.nFileSizeHigh, is.nFileSizeLow)),
        static_cast<qint64>(joined(changed.dwHighDateTime, changed.dwLowDateTime))};
}

Status readFromStart(QFile& file, std::span<char> bytes)
{
    const qint64 before = file.pos();
    const bool isRead = file.seek(0) && file.read(bytes.data(), qint64(bytes.size())) >= 0;
    return file.seek(before) && isRead ? Status() : Status(lastHostError(file.fileName()));
}

Result<HostFileStamp> stampAt(const QString& hostPath)
{
    return Error{error::NotSupported, hostPath};
}

/// Times of files here may be set by anybody: a stamp alone says too little.
bool isSettled(const HostFileStamp&)
{
    return false;
}

Status flushToDisk(QFile& file)
{
    return file.flush() && ::FlushFileBuffers(handleOf(file)) ? Status() : Status(lastHostError({}));
}

qint64 copyWithinHost(QFileDevice&, QFileDevice&, qint64)
{
    return 0;
}

Status removeHostFile(const HostPlace& place)
{
    const QString path = place.path();
    return ::DeleteFileW(HostPath(path).text()) ? Status() : Status(lastHostError(path));
}

Result<HostFolder> makeHostFolder(const HostPlace& place)
{
    const QString path = place.path();
    if (!::CreateDirectoryW(HostPath(path).text(), nullptr) && ::GetLastError() != ERROR_ALREADY_EXISTS)
        return lastHostError(path);
    return place.folder.folder(place.name);
}

Status removeHostFolder(const HostPlace& place)
{
    const QString path = place.path();
    return ::RemoveDirectoryW(HostPath(path).text()) ? Status() : Status(lastHostError(path));
}

Status renameHostFile(const HostPlace& from, const QString& name)
{
    const QString to = from.beside(name).path();
    const HostPath source(from.path());
    const HostPath target(to);
    // Whoever reads the file at this moment, a virus scanner too, keeps it from being replaced.
    constexpr int tries = 100;
    constexpr DWORD pauseMilliseconds = 10;
    for (int i = 0;; ++i) {
        if (::MoveFileExW(source.text(), target.text(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
            return {};
        const DWORD failure = ::GetLastError();
        const bool mayPass = failure == ERROR_SHARING_VIOLATION || failure == ERROR_ACCESS_DENIED;
        if (!mayPass || i == tries)
            return Error{failure, to};
        ::Sleep(pauseMilliseconds);
    }
}

Status replaceFile(const HostPlace& place, const QByteArray& bytes)
{
    const HostPlace temporary = place.beside(u'.' + place.name + u".new"_s);
    if (Status gone = removeHostFile(temporary); !gone && gone.errorNumber() != error::FileNotFound)
        return gone;
    DWORD failure = ERROR_SUCCESS;
    {
        const HostHandle file(::CreateFileW(HostPath(temporary.path()).text(), GENERIC_WRITE, 0, nullptr,
            CREATE_NEW, DiskFileFlags, nullptr));
        if (!file.isOpen())
            return lastHostError(temporary.path());
        takeRights(place.path(), temporary.path());
        failure = writeAll(file.get(), bytes);
    }
    Status status = failure == ERROR_SUCCESS ? renameHostFile(temporary, place.name)
                                             : Status(Error{failure, place.path()});
    if (!status)
        static_cast<void>(removeHostFile(temporary));
    return status;
}

Result<HostEntry> hostEntry(const HostPlace& place)
{
    const QString hostPath = place.path();
    WIN32_FILE_ATTRIBUTE_DATA is = {};
    if (::GetFileAttributesExW(HostPath(hostPath).text(), GetFileExInfoStandard, &is))
        return HostEntry{(is.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0,
            (is.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0,
            static_cast<qint64>(joined(is.nFileSizeHigh, is.nFileSizeLow))};
    Error failure = lastHostError(hostPath);
    if (failure.number == error::PathNotFound)
        failure.number = error::FileNotFound;
    return failure;
}

QString realHostPath(const QString& hostPath)
{
    const HostHandle handle(::CreateFileW(HostPath(hostPath).text(), 0, shareAll, nullptr, OPEN_EXISTING,
        DiskFileFlags | FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    if (!handle.isOpen())
        return {};
    std::array<wchar_t, 32768> text;
    const DWORD size = ::GetFinalPathNameByHandleW(
        handle.get(), text.data(), static_cast<DWORD>(text.size()), FILE_NAME_NORMALIZED | VOLUME_NAME_DOS);
    if (size == 0 || size >= text.size())
        return {};
    QString path = QString::fromWCharArray(text.data(), static_cast<qsizetype>(size));
    if (path.startsWith(u"\\\\?\\UNC\\"_s))
        path.replace(0, 7, u"\\"_s);
    else if (path.startsWith(u"\\\\?\\"_s))
        path.remove(0, 4);
    return QDir::fromNativeSeparators(path);
}

} // namespace quoril
