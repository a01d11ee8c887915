#include "platform/tree/tree_files.h"

#include "formats/name_case.h"
#include "formats/version_block.h"
#include "platform/host/host_file.h"
#include "platform/machine_path.h"
#include "platform/tree/tree_paths.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <compare>

namespace quoril {

namespace {

Result<std::unique_ptr<QIODevice>> openDevice(const Result<HostPlace>& place, HostOpen purpose)
{
    if (!place)
        return place.failure();
    Result<std::unique_ptr<QFile>> file = openRegularFile(*place, purpose);
    if (!file)
        return file.failure();
    return std::unique_ptr<QIODevice>(*std::move(file));
}

/// Whether the name matches the pattern, in which * stands for any units and ? for one.
bool matches(QStringView name, QStringView pattern)
{
    qsizetype at = 0;
    qsizetype inPattern = 0;
    qsizetype star = -1;
    qsizetype afterStar = 0;
    while (at < name.size()) {
        if (inPattern < pattern.size() && pattern[inPattern] == u'*') {
            star = inPattern++;
            afterStar = at;
        } else if (inPattern < pattern.size()
            && (pattern[inPattern] == u'?'
                || upcase(pattern[inPattern].unicode()) == upcase(name[at].unicode()))) {
            ++at;
            ++inPattern;
        } else if (star >= 0) {
            inPattern = star + 1;
            at = ++afterStar;
        } else {
            return false;
        }
    }
    return std::all_of(pattern.begin() + inPattern, pattern.end(), [](QChar unit) { return unit == u'*'; });
}

} // namespace

Result<std::unique_ptr<QIODevice>> TreeFiles::openForReading(QStringView path)
{
    return openDevice(m_paths.existing(path), HostOpen::Read);
}

Result<std::unique_ptr<QIODevice>> TreeFiles::openForWriting(QStringView path)
{
    return openDevice(m_paths.forCreation(path), HostOpen::Write);
}

Status TreeFiles::remove(QStringView path)
{
    const Result<HostPlace> place = m_paths.existing(path);
    return place ? removeHostFile(*place) : Status(place.failure());
}

Result<QStringList> TreeFiles::find(QStringView pattern)
{
    const QStringView folder = folderOf(pattern);
    const Result<HostPlace> place = m_paths.existing(folder.isEmpty() ? QStringView(u".") : folder);
    if (!place)
        return place.errorNumber() == error::FileNotFound ? Error{error::PathNotFound, {}} : place.failure();
    const Result<HostFolder> host = place->folder.folder(place->name);
    if (!host)
        return host.failure();
    QStringList names;
    for (const QString& name : host->names()) {
        if (!matches(name, pattern.mid(folder.size())))
            continue;
        // What the machine can't reach by that name isn't there for it.
        const Result<HostPlace> found = m_paths.existing(folder.toString() + name);
        const Result<HostEntry> entry = found ? hostEntry(*found) : Result<HostEntry>(found.failure());
        if (entry && !entry->isFolder)
            names.append(name);
    }
    std::ranges::sort(names, [](const QString& left, const QString& right) {
        const auto order = foldedCompare(left, right);
        return std::is_eq(order) ? left < right : std::is_lt(order);
    });
    return names.isEmpty() ? Result<QStringList>(Error{error::FileNotFound, {}}) : names;
}

Result<QString> TreeFiles::fileVersion(QStringView path)
{
    const auto file = openForReading(path);
    if (!file)
        return file.failure();
    const auto block = readVersionBlock(**file);
    return block ? fileVersionOf(*block) : Result<QString>(block.failure());
}

Status TreeFiles::setCurrentDirectory(QStringView path)
{
    return m_paths.setCurrentDirectory(path);
}

Result<QString> TreeFiles::hostPath(QStringView path) const
{
    const Result<HostPlace> place = m_paths.existing(path);
    return place ? Result<QString>(place->path()) : Result<QString>(place.failure());
}

Result<QString> TreeFiles::machinePath(const QString& hostPath) const
{
    // The tree may have been reached by way of links.
    const QFileInfo file(hostPath);
    const QString real = file.canonicalFilePath();
    QString path = m_paths.machinePath(real.isEmpty() ? file.absoluteFilePath() : real);
    return path.isEmpty() ? Result<QString>(Error{error::PathNotFound, hostPath}) : path;
}

} // namespace quoril
