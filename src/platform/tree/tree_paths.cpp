#include "platform/tree/tree_paths.h"

#include "formats/name_case.h"
#include "platform/host/host_file.h"
#include "platform/machine_path.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr quint32 ErrorDirectory = 267;

/// Takes the prefix away where the path begins with it, either separator counting.
bool takePrefix(QStringView& path, QStringView prefix)
{
    if (path.size() < prefix.size())
        return false;
    for (qsizetype i = 0; i < prefix.size(); ++i) {
        const bool same = isPathSeparator(prefix[i]) ? isPathSeparator(path[i])
                                                     : foldedEquals(path.mid(i, 1), prefix.mid(i, 1));
        if (!same)
            return false;
    }
    path = path.mid(prefix.size());
    return true;
}

bool isValidName(QStringView name)
{
    constexpr QStringView forbidden = u"<>:\"|?*";
    return std::none_of(
        name.begin(), name.end(), [&](QChar unit) { return unit < u' ' || forbidden.contains(unit); });
}

/// Windows drops dots and blanks at the end of a name.
QStringView withoutTrailingDots(QStringView name)
{
    while (!name.isEmpty() && (name.back() == u'.' || name.back() == u' '))
        name.chop(1);
    return name;
}

Status appendNames(QStringList& names, QStringView path)
{
    qsizetype at = 0;
    while (at < path.size()) {
        qsizetype end = at;
        while (end < path.size() && !isPathSeparator(path[end]))
            ++end;
        const QStringView name = path.mid(at, end - at);
        at = end + 1;
        if (name == u"..") {
            if (!names.isEmpty())
                names.removeLast();
            continue;
        }
        const QStringView kept = withoutTrailingDots(name);
        if (!isValidName(kept))
            return Error{error::InvalidName, {}};
        if (!kept.isEmpty())
            names.append(kept.toString());
    }
    return {};
}

/// The folder's entry of that name without regard to case, empty if there is none.
QString entryOfAnyCase(const HostFolder& folder, QStringView name)
{
    const QStringList entries = folder.names();
    const auto found = std::find_if(
        entries.begin(), entries.end(), [&](const QString& entry) { return foldedEquals(name, entry); });
    return found == entries.end() ? QString() : *found;
}

} // namespace

TreePaths::TreePaths(const QString& root) : m_root(realHostPath(root))
{
    if (m_root.isEmpty() && !root.isEmpty())
        m_root = QDir::cleanPath(QFileInfo(root).absoluteFilePath());
    const QString here = realHostPath(QDir::currentPath());
    if (contains(here))
        m_current = namesBelow(here);
}

TreePaths::TreePaths(const HostFolder& root) : m_root(root.path()), m_rootFolder(root) { }

bool TreePaths::contains(const QString& hostPath) const
{
    if (m_root.isEmpty()) // no tree at all
        return false;
    // A root that is a whole disk ends in a separator itself.
    return hostPath == m_root
        || (hostPath.startsWith(m_root) && (m_root.endsWith(u'/') || hostPath[m_root.size()] == u'/'));
}

Result<QStringList> TreePaths::components(QStringView path) const
{
    if (path.isEmpty())
        return Error{error::PathNotFound, {}};
    QStringList names;
    if (takePrefix(path, u"\\SystemRoot\\")) {
        names.append(u"Windows"_s);
    } else {
        const bool isFull
            = takePrefix(path, u"\\??\\") || takePrefix(path, u"\\\\?\\") || takePrefix(path, u"\\\\.\\");
        if (isFull && driveOf(path).isEmpty())
            return Error{error::PathNotFound, {}};
        const bool drive = !driveOf(path).isEmpty();
        if (drive) {
            if (path[0] != u'C' && path[0] != u'c')
                return Error{error::PathNotFound, {}};
            path = path.mid(2);
        } else if (path.size() >= 2 && isPathSeparator(path[0]) && isPathSeparator(path[1])) {
            return Error{error::PathNotFound, {}}; // a share of another machine
        }
        if (path.isEmpty() || !isPathSeparator(path[0])) {
            const std::lock_guard lock(m_mutex);
            names = m_current;
        }
    }
    if (Status status = appendNames(names, path); !status)
        return status.failure();
    return names;
}

/// Nothing ensures here that the target stays what it is: the names are gone through like any others.
Result<QStringList> TreePaths::namesOfTarget(const HostPlace& link) const
{
    const QString target = realHostPath(link.path());
    // A link with no end is not followed either: writing through it would make a file wherever it points.
    if (target.isEmpty() || !contains(target))
        return Error{error::AccessDenied, link.path() + u" leads out of the tree"_s};
    return namesBelow(target);
}

/// Goes from folder to folder, each opened in the one before. Where a link stands on the way, the names
/// become those that lead to its target and beyond, and the place has no name.
Result<HostPlace> TreePaths::walk(HostFolder folder, QStringList& names, Last last) const
{
    for (qsizetype i = 0; i < names.size(); ++i) {
        const bool isLast = i + 1 == names.size();
        HostPlace place{folder, names[i]};
        Result<HostEntry> entry = hostEntry(place);
        if (entry.errorNumber() == error::FileNotFound) {
            if (const QString other = entryOfAnyCase(folder, place.name); !other.isEmpty())
                entry = hostEntry(place = {folder, other});
        }
        if (!entry && entry.errorNumber() != error::FileNotFound)
            return entry.failure();
        if (!entry && isLast && last == Last::MayBeMissing)
            return place;
        if (!entry)
            return Error{isLast ? error::FileNotFound : error::PathNotFound, {}};
        if (entry->isLink) {
            const Result<QStringList> target = namesOfTarget(place);
            if (!target)
                return target.failure();
            names = *target + names.mid(i + 1);
            return HostPlace{folder, {}};
        }
        if (isLast)
            return place;
        Result<HostFolder> next = folder.folder(place.name);
        if (!next)
            return next.errorNumber() == error::AccessDenied ? next.failure()
                                                             : Error{error::PathNotFound, {}};
        folder = *std::move(next);
    }
    return HostPlace{folder, u"."_s};
}

/// The folder below the root at which the names lead without a link and as they are spelt, in one step.
Result<HostFolder> TreePaths::straightFolder(const QStringList& names) const
{
    QString path = m_root;
    for (const QString& name : names)
        path = path.endsWith(u'/') ? path + name : path + u'/' + name;
    return HostFolder::openStraight(path);
}

Result<HostPlace> TreePaths::resolve(QStringList names, Last last) const
{
    if (!names.isEmpty() && !m_rootFolder) {
        const Result<HostFolder> folder = straightFolder(names.first(names.size() - 1));
        QStringList name = {names.last()};
        if (folder) {
            Result<HostPlace> place = walk(*folder, name, last);
            if (!place || !place->name.isEmpty())
                return place;
        }
    }
    const Result<HostFolder> root = m_rootFolder ? *m_rootFolder : HostFolder::open(m_root);
    if (!root)
        return Error{names.size() == 1 ? error::FileNotFound : error::PathNotFound, {}};
    constexpr int longestChain = 40; // of links, as the kernel has it
    for (int links = 0; links <= longestChain; ++links) {
        Result<HostPlace> place = walk(*root, names, last);
        if (!place || !place->name.isEmpty())
            return place;
    }
    return Error{error::AccessDenied, m_root + u": links lead to links without end"_s};
}

QStringList TreePaths::namesBelow(const QString& hostPath) const
{
    return hostPath.mid(m_root.size()).split(u'/', Qt::SkipEmptyParts);
}

Result<HostPlace> TreePaths::existing(QStringView path) const
{
    const Result<QStringList> names = components(path);
    return names ? resolve(*names, Last::MustExist) : Result<HostPlace>(names.failure());
}

Result<HostPlace> TreePaths::forCreation(QStringView path) const
{
    const Result<QStringList> names = components(path);
    return names ? resolve(*names, Last::MayBeMissing) : Result<HostPlace>(names.failure());
}

Result<QString> TreePaths::absolute(QStringView path) const
{
    const Result<QStringList> names = components(path);
    return names ? Result<QString>(u"C:\\"_s + names->join(u'\\')) : Result<QString>(names.failure());
}

QString TreePaths::machinePath(const QString& hostPath) const
{
    const QString clean = QDir::cleanPath(hostPath);
    if (!contains(clean))
        return {};
    QString below = clean.mid(m_root.size() + (m_root.endsWith(u'/') ? 0 : 1));
    return u"C:\\"_s + below.replace(u'/', u'\\');
}

QString TreePaths::currentDirectory() const
{
    const std::lock_guard lock(m_mutex);
    return u"C:\\"_s + m_current.join(u'\\');
}

Status TreePaths::setCurrentDirectory(QStringView path)
{
    const Result<QStringList> names = components(path);
    if (!names)
        return names.failure();
    const Result<HostPlace> place = resolve(*names, Last::MustExist);
    if (!place)
        return place.failure();
    if (const Result<HostEntry> entry = hostEntry(*place); !entry || !entry->isFolder)
        return Error{ErrorDirectory, {}};
    const std::lock_guard lock(m_mutex);
    m_current = *names;
    return {};
}

QString expandMachineVariables(QStringView text)
{
    struct Variable
    {
        QStringView name;
        QStringView value;
    };
    static constexpr std::array<Variable, 8> variables = {{
        {u"%SystemRoot%", u"C:\\Windows"},
        {u"%windir%", u"C:\\Windows"},
        {u"%SystemDrive%", u"C:"},
        {u"%ProgramFiles%", u"C:\\Program Files"},
        {u"%ProgramFiles(x86)%", u"C:\\Program Files (x86)"},
        {u"%CommonProgramFiles%", u"C:\\Program Files\\Common Files"},
        {u"%ProgramData%", u"C:\\ProgramData"},
        {u"%AllUsersProfile%", u"C:\\ProgramData"},
    }};
    QString expanded;
    for (qsizetype at = 0; at < text.size();) {
        const auto variable = std::find_if(variables.begin(), variables.end(),
            [&](const Variable& each) { return foldedEquals(text.mid(at, each.name.size()), each.name); });
        const bool found = variable != variables.end();
        expanded += found ? variable->value : text.mid(at, 1);
        at += found ? variable->name.size() : 1;
    }
    return expanded;
}

} // namespace quoril
