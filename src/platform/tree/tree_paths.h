#pragma once

#include "formats/error.h"
#include "platform/host/host_folder.h"

#include <QString>
#include <QStringList>
#include <QStringView>

#include <mutex>
#include <optional>

namespace quoril {

/// Takes paths of the machine to paths of the host and back. Drive C: is the folder of the tree; names match
/// without regard to case, an exact match first. Nothing outside the tree is ever reached: `..` stops at the
/// drive's root as it does on Windows, and a symbolic link that leads out of the tree is error 5. A place
/// holds its folder open, so that this stays so whoever exchanges a folder for a link afterwards.
///
/// Paths come in the forms that a registry holds: "C:\dir\file" with either separator, "\dir\file" and
/// "dir\file" against the current directory, "C:file", "\SystemRoot\file", and all of them after "\??\",
/// "\\?\" or "\\.\". It may be used from any thread.
class TreePaths
{
public:
    /// The tree's folder; it need not exist, and an empty text is none. The current directory is the
    /// process's own where that lies within the tree, else the root of the drive.
    explicit TreePaths(const QString& root);

    /// A tree in this very folder, wherever it is moved to.
    explicit TreePaths(const HostFolder& root);

    /// The tree's folder as an absolute host path without symbolic links.
    const QString& root() const { return m_root; }

    /// Where a file or folder that exists lies on the host. 2 no such file, 3 no such folder on the way or
    /// another drive, 5 it can't be looked at or lies outside the tree, 123 no valid name.
    Result<HostPlace> existing(QStringView path) const;

    /// The same for a file that may be missing while its folder exists.
    Result<HostPlace> forCreation(QStringView path) const;

    /// The path in full, "C:\dir\file", without a look at the disk. Errors 3 and 123 as above.
    Result<QString> absolute(QStringView path) const;

    /// The machine's path of a host path, empty for one outside the tree.
    QString machinePath(const QString& hostPath) const;

    /// The current directory in full, "C:\dir".
    QString currentDirectory() const;
    /// 2, 3, 5 or 123 as in existing(); 267 if it is no folder.
    Status setCurrentDirectory(QStringView path);

private:
    enum class Last
    {
        MustExist,
        MayBeMissing
    };

    Result<QStringList> components(QStringView path) const;
    Result<HostPlace> resolve(QStringList names, Last last) const;
    Result<HostPlace> walk(HostFolder folder, QStringList& names, Last last) const;
    Result<QStringList> namesOfTarget(const HostPlace& link) const;
    Result<HostFolder> straightFolder(const QStringList& names) const;
    QStringList namesBelow(const QString& hostPath) const;
    bool contains(const QString& hostPath) const;

    QString m_root;
    std::optional<HostFolder> m_rootFolder; // where the tree is one held open
    mutable std::mutex m_mutex;
    QStringList m_current; // guarded by m_mutex
};

/// The text with "%SystemRoot%" and its like replaced as a machine whose system lies in C:\Windows has them;
/// unknown names stay as they are.
QString expandMachineVariables(QStringView text);

} // namespace quoril
