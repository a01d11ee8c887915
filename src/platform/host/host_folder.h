#pragma once

#include "formats/error.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <memory>

namespace quoril {

/// A folder of the host that is held open: what is done in it is done in this very folder, whatever is put
/// under its path meanwhile. Copies share it. A host without such handles goes by the path.
class HostFolder
{
public:
    /// The folder of that path; links on the way to it are followed. 2, 3 if it is no folder, 5.
    static Result<HostFolder> open(const QString& hostPath);

    /// The folder of an absolute path on which nothing is a link, in one step. 50 where the host can't do
    /// that, else any error: folder(), level by level, finds what it is.
    static Result<HostFolder> openStraight(const QString& hostPath);

    /// The folder of that name in this one. A link is none: 3, as for a file; 2, 5.
    Result<HostFolder> folder(const QString& name) const;

    /// The path under which it was opened, for texts and for programs of the host.
    const QString& path() const { return m_path; }

    /// The names of all that is in it, by the value of their units; empty if they can't be listed.
    QStringList names() const;

    /// The host's own handle; -1 where there is none.
    std::intptr_t native() const;

private:
    struct Handle;
    HostFolder(std::shared_ptr<const Handle> handle, QString path);

    std::shared_ptr<const Handle> m_handle;
    QString m_path;
};

/// A name in a folder, whether there is such a file or not.
struct HostPlace
{
    HostFolder folder;
    QString name; // "." for the folder itself

    QString path() const;
    /// Another name in the same folder.
    HostPlace beside(const QString& other) const { return {folder, other}; }
};

/// A folder that is being filled before anybody sees it, in another that was made anew for its maker alone,
/// under a name that nobody has. What was not put in its place is removed again with all that is in it.
class NewHostFolder
{
public:
    /// 5, 19, 112.
    static Result<NewHostFolder> make(const HostFolder& parent);
    NewHostFolder(NewHostFolder&&) = default;
    NewHostFolder& operator=(NewHostFolder&&) = delete;
    ~NewHostFolder();

    /// The folder to fill. What is made in it is for others as the user lets them have his files.
    const HostFolder& folder() const { return m_state->folder; }

    /// Puts it under the name in the parent. 80 where the name is taken.
    Status putUnder(const QString& name);

private:
    struct State
    {
        HostPlace outer; // the one for its maker alone, in the parent
        HostFolder held;
        HostFolder folder;
    };
    explicit NewHostFolder(State state) : m_state(std::make_unique<State>(std::move(state))) { }

    std::unique_ptr<State> m_state;
};

} // namespace quoril
