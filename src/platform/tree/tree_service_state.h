#pragma once

#include "formats/error.h"
#include "platform/host/file_lock.h"
#include "platform/host/process_identity.h"
#include "platform/services.h"

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <memory>
#include <optional>

namespace quoril {

class TreePaths;

/// What a service process tells of itself, and its host of both: the file "report" and the file "state" of
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
    /// The folder above, in which the locks of the service manager lie; empty if there is none.
    static QString parent(const TreePaths& paths);
    /// The same, made where it is missing. 19 where the tree can't be written.
    static Result<QString> makeParent(const TreePaths& paths);
    /// The lock that whoever starts, stops or removes a service of the folder above holds meanwhile. 3 for an
    /// empty folder: there is then no place for it in the tree. Else errors as of FileLock.
    static Result<std::unique_ptr<FileLock>> lockServices(const QString& parent);
    /// The folder of a service, made where it is missing. 19 as above.
    static Result<ServiceFolder> make(const TreePaths& paths, QStringView service);

    /// The folder of a service; it need not exist.
    ServiceFolder(const TreePaths& paths, QStringView service);

    const QString& path() const { return m_path; }
    /// The host path of a file in the folder.
    QString file(QStringView name) const { return m_path + u'/' + name.toString(); }

    void remove() const;

    /// What the host recorded last; none if the service was never started.
    std::optional<ServiceRecord> recorded() const { return read(u"state"); }
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

    QString m_path;
};

} // namespace quoril
