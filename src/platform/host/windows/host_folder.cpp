#include "platform/host/host_folder.h"

#include "platform/host/host_file.h"
#include "platform/host/windows/host_handle.h"

#include <QDir>
#include <QFileInfo>
#include <QRandomGenerator>

namespace quoril {

using namespace Qt::StringLiterals;

/// A folder goes by its path here: there is nothing to hold.
struct HostFolder::Handle
{
};

HostFolder::HostFolder(std::shared_ptr<const Handle> handle, QString path)
    : m_handle(std::move(handle))
    , m_path(std::move(path))
{
}

Result<HostFolder> HostFolder::open(const QString& hostPath)
{
    const QFileInfo found(hostPath);
    if (!found.isDir())
        return Error{found.exists() ? error::PathNotFound : error::FileNotFound, hostPath};
    return HostFolder(nullptr, hostPath);
}

Result<HostFolder> HostFolder::openStraight(const QString&)
{
    return Error{error::NotSupported, {}};
}

Result<HostFolder> HostFolder::folder(const QString& name) const
{
    const HostPlace place{*this, name};
    const Result<HostEntry> entry = hostEntry(place);
    if (!entry)
        return entry.failure();
    return entry->isLink ? Error{error::PathNotFound, place.path()} : open(place.path());
}

QStringList HostFolder::names() const
{
    return QDir(m_path).entryList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

std::intptr_t HostFolder::native() const
{
    return -1;
}

Result<NewHostFolder> NewHostFolder::make(const HostFolder& parent)
{
    constexpr int tries = 100;
    for (int i = 0; i < tries; ++i) {
        const HostPlace outer{
            parent, u".quoril-%1.new"_s.arg(QRandomGenerator::system()->generate(), 8, 16, QChar(u'0'))};
        if (!::CreateDirectoryW(HostPath(outer.path()).text(), nullptr)) {
            if (::GetLastError() == ERROR_ALREADY_EXISTS)
                continue;
            return lastHostError(parent.path());
        }
        const Result<HostFolder> held = parent.folder(outer.name);
        if (!held)
            return held.failure();
        const Result<HostFolder> folder = makeHostFolder({*held, u"new"_s});
        return folder ? NewHostFolder({outer, *held, *folder}) : Result<NewHostFolder>(folder.failure());
    }
    return Error{error::FileExists, parent.path()};
}

Status NewHostFolder::putUnder(const QString& name)
{
    const QString target = m_state->outer.beside(name).path();
    if (::MoveFileExW(HostPath(folder().path()).text(), HostPath(target).text(), MOVEFILE_WRITE_THROUGH))
        return {};
    Error failure = lastHostError(target);
    if (failure.number == ERROR_ALREADY_EXISTS)
        failure.number = error::FileExists;
    return failure;
}

} // namespace quoril
