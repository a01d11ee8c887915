#include "platform/tree/tree_paths.h"

#include "formats/name_case.h"
#include "platform/host/host_file.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr quint32 ErrorDirectory = 267;

bool isSeparator(QChar unit)
{
    return unit == u'\\' || unit == u'/';
}

bool hasDrive(QStringView path)
{
    return path.size() >= 2 && path[1] == u':';
}

/// Takes the prefix away where the path begins with it, either separator counting.
bool takePrefix(QStringView& path, QStringView prefix)
{
    if (path.size() < prefix.size())
        return false;
    for (qsizetype i = 0; i < prefix.size(); ++i) {
        const bool same
            = isSeparator(prefix[i]) ? isSeparator(path[i]) : foldedEquals(path.mid(i, 1), prefix.mid(i, 1));
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
        while (end < path.size() && !isSeparator(path[end]))
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
QString entryOfAnyCase(const QString& folder, QStringView name)
{
    const QStringList entries = QDir(folder).entryList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    const auto found = std::find_if(
        entries.begin(), entries.end(), [&](const QString& entry) { return foldedEquals(name, entry); });
    return found == entries.end() ? QString() : *found;
}

} // namespace

TreePaths::TreePaths(const QString& root) : m_root(realHostPath(root))
{
    if (m_root.isEmpty())
        m_root = QDir::cleanPath(QFileInfo(root).absoluteFilePath());
    const QString here = realHostPath(QDir::currentPath());
    if (here != m_root && contains(here))
        m_current = here.mid(m_root.size() + 1).split(u'/', Qt::SkipEmptyParts);
}

bool TreePaths::contains(const QString& hostPath) const
{
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
        if (isFull && !hasDrive(path))
            return Error{error::PathNotFound, {}};
        const bool drive = hasDrive(path);
        if (drive) {
            if (path[0] != u'C' && path[0] != u'c')
                return Error{error::PathNotFound, {}};
            path = path.mid(2);
        } else if (path.size() >= 2 && isSeparator(path[0]) && isSeparator(path[1])) {
            return Error{error::PathNotFound, {}}; // a share of another machine
        }
        if (path.isEmpty() || !isSeparator(path[0])) {
            const std::lock_guard lock(m_mutex);
            names = m_current;
        }
    }
    if (Status status = appendNames(names, path); !status)
        return status.failure();
    return names;
}

Result<QString> TreePaths::step(const QString& folder, const QString& name) const
{
    QString path = folder + u'/' + name;
    Result<HostEntry> entry = hostEntry(path);
    if (!entry) {
        if (entry.errorNumber() != error::FileNotFound)
            return entry.failure();
        const QString other = entryOfAnyCase(folder, name);
        if (other.isEmpty())
            return Error{error::FileNotFound, {}};
        path = folder + u'/' + other;
        entry = hostEntry(path);
    }
    if (!entry || !entry->isLink)
        return path;
    // A link with no end is not followed either: writing through it would make a file wherever it points.
    const QString target = realHostPath(path);
    if (target.isEmpty() || !contains(target))
        return Error{error::AccessDenied, path + u" leads out of the tree"_s};
    return target;
}

Result<QString> TreePaths::resolve(const QStringList& names, Last last) const
{
    QString path = m_root;
    for (qsizetype i = 0; i < names.size(); ++i) {
        const bool isLast = i + 1 == names.size();
        if (i > 0 && !QFileInfo(path).isDir())
            return Error{error::PathNotFound, {}};
        Result<QString> next = step(path, names[i]);
        if (next) {
            path = *std::move(next);
            continue;
        }
        if (next.errorNumber() != error::FileNotFound)
            return next;
        if (!isLast)
            return Error{error::PathNotFound, {}};
        return last == Last::MayBeMissing ? Result<QString>(path + u'/' + names[i]) : next;
    }
    return path;
}

Result<QString> TreePaths::existing(QStringView path) const
{
    const Result<QStringList> names = components(path);
    return names ? resolve(*names, Last::MustExist) : Result<QString>(names.failure());
}

Result<QString> TreePaths::forCreation(QStringView path) const
{
    const Result<QStringList> names = components(path);
    return names ? resolve(*names, Last::MayBeMissing) : Result<QString>(names.failure());
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
    const Result<QString> host = resolve(*names, Last::MustExist);
    if (!host)
        return host.failure();
    if (!QFileInfo(*host).isDir())
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
