#include "platform/tree/tree_files.h"

#include "formats/name_case.h"
#include "formats/version_block.h"
#include "platform/host/host_file.h"
#include "platform/tree/tree_paths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <compare>

namespace quoril {

namespace {

Result<std::unique_ptr<QIODevice>> openDevice(const QString& hostPath, HostOpen purpose)
{
    Result<std::unique_ptr<QFile>> file = openRegularFile(hostPath, purpose);
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
    qsizetype behindStar = 0;
    while (at < name.size()) {
        if (inPattern < pattern.size() && pattern[inPattern] == u'*') {
            star = inPattern++;
            behindStar = at;
        } else if (inPattern < pattern.size()
            && (pattern[inPattern] == u'?'
                || upcase(pattern[inPattern].unicode()) == upcase(name[at].unicode()))) {
            ++at;
            ++inPattern;
        } else if (star >= 0) {
            inPattern = star + 1;
            at = ++behindStar;
        } else {
            return false;
        }
    }
    return std::all_of(pattern.begin() + inPattern, pattern.end(), [](QChar unit) { return unit == u'*'; });
}

/// How much of the path stands before its last part.
qsizetype folderSize(QStringView path)
{
    const auto isEnd = [](QChar unit) { return unit == u'\\' || unit == u'/' || unit == u':'; };
    return std::find_if(path.rbegin(), path.rend(), isEnd).base() - path.begin();
}

} // namespace

Result<std::unique_ptr<QIODevice>> TreeFiles::openForReading(QStringView path)
{
    const Result<QString> host = m_paths.existing(path);
    if (!host)
        return host.failure();
    return openDevice(*host, HostOpen::Read);
}

Result<std::unique_ptr<QIODevice>> TreeFiles::openForWriting(QStringView path)
{
    const Result<QString> host = m_paths.forCreation(path);
    if (!host)
        return host.failure();
    return openDevice(*host, HostOpen::Write);
}

Status TreeFiles::remove(QStringView path)
{
    const Result<QString> host = m_paths.existing(path);
    if (!host)
        return host.failure();
    return removeHostFile(*host);
}

Result<QStringList> TreeFiles::find(QStringView pattern)
{
    const QStringView folder = pattern.left(folderSize(pattern));
    const Result<QString> host = m_paths.existing(folder.isEmpty() ? QStringView(u".") : folder);
    if (!host)
        return host.errorNumber() == error::FileNotFound ? Error{error::PathNotFound, {}} : host.failure();
    QStringList names;
    for (const QString& name : QDir(*host).entryList(QDir::Files | QDir::Hidden)) {
        // What the machine can't reach by that name isn't there for it.
        if (matches(name, pattern.mid(folder.size())) && m_paths.existing(folder.toString() + name))
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
    return m_paths.existing(path);
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
