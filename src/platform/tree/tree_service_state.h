#pragma once

#include "formats/error.h"
#include "platform/host/file_lock.h"
#include "platform/host/host_folder.h"
#include "platform/host/process_identity.h"
#include "platform/services.h"

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <memory>
#include <optional>

namespace quoril {

class TreePaths;

/// What a service process reports of itself, and its host of both: the file "report" and the file "state" of
/// the service's folder, as docs/service-handshake.md describes them.
struct ServiceRecord
{
    ServiceStatus status;
    std::optional<ProcessIdentity> service;
    std::optional<ProcessIdentity> host;

    QByteArray toText() const;
    static std::optional<ServiceRecord> fromText(const QByteArray& text);
};

/// The folder of the tree in which one service's state lives, ProgramData\Quoril\services\<name>.
class ServiceFolder
{
public:
    /// The folder above, in which the locks of the service manager lie. 2 or 3 if there is none.
    static Result<HostFolder> parent(const TreePaths& paths);
    /// The same, made where it is missing. 5, 19 where the tree can't be written.
    static Result<HostFolder> makeParent(const TreePaths& paths);
    /// The lock that whoever starts, stops or removes a service of the folder above holds meanwhile. Errors
    /// as of FileLock, and of a folder that is not there.
    static Result<std::unique_ptr<FileLock>> lockServices(const Result<HostFolder>& parent);
    /// The folder of a service, made where it is missing. 5, 19 as above.
    static Result<ServiceFolder> make(const TreePaths& paths, QStringView service);

    /// The folder of a service; it need not exist.
    ServiceFolder(const TreePaths& paths, QStringView service);

    bool exists() const { return m_folder.has_value(); }
    /// The folder's host path; empty if there is none.
    QString path() const { return m_folder ? m_folder->path() : QString(); }
    /// A file in the folder, which exists.
    HostPlace place(QStringView name) const { return {*m_folder, name.toString()}; }

    void remove() const;

    /// What the host recorded last; none if the service was never started. What others than this user and
    /// root could have written is none either, and that is reported: it names processes that a stop would
    /// end.
    std::optional<ServiceRecord> recorded() const;
    Status record(const ServiceRecord& state) const { return write(u"state", state); }
    /// What the service process reported last.
    std::optional<ServiceRecord> reported() const { return read(u"report"); }
    Status report(const ServiceRecord& report) const { return write(u"report", report); }

    bool isStopAsked() const;
    Status askStop() const;
    /// Takes away what a run left but its state.
    void clearRun() const;

    /// The state in force: what was recorded, unless the processes that it speaks of are gone. A service that
    /// was asked to stop is stop pending.
    ServiceRecord current() const;

private:
    std::optional<ServiceRecord> read(QStringView name) const;
    Status write(QStringView name, const ServiceRecord& record) const;

    ServiceFolder(HostFolder parent, HostFolder folder)
        : m_parent(std::move(parent))
        , m_folder(std::move(folder))
    {
    }

    std::optional<HostFolder> m_parent;
    std::optional<HostFolder> m_folder;
};

} // namespace quoril
