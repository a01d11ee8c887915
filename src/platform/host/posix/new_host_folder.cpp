#include "platform/host/host_file.h"
#include "platform/host/host_folder.h"
#include "platform/host/posix/host_error.h"

#include <QFile>
#include <QRandomGenerator>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr const char* InnerName = "new";
constexpr mode_t Everything = S_IRWXU | S_IRWXG | S_IRWXO;

/// Renames a folder to a name that nothing has.
int renameToFree(int from, const char* name, int to, const char* target)
{
    if (::renameat2(from, name, to, target, RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    // A disk without such a renaming: an empty folder takes the name, which a folder may then replace.
    if (::mkdirat(to, target, S_IRWXU) != 0)
        return errno;
    if (::renameat(from, name, to, target) == 0)
        return 0;
    const int failure = errno;
    ::unlinkat(to, target, AT_REMOVEDIR);
    return failure;
}

bool isOfThisUser(const HostFolder& folder)
{
    struct stat status = {};
    return ::fstat(static_cast<int>(folder.native()), &status) == 0 && status.st_uid == ::geteuid();
}

} // namespace

Result<NewHostFolder> NewHostFolder::make(const HostFolder& parent)
{
    QRandomGenerator* const random = QRandomGenerator::system();
    constexpr int tries = 100;
    for (int i = 0; i < tries; ++i) {
        const HostPlace outer{parent, u".quoril-%1.new"_s.arg(random->generate(), 8, 16, QChar(u'0'))};
        const QByteArray name = QFile::encodeName(outer.name);
        if (::mkdirat(static_cast<int>(parent.native()), name.constData(), S_IRWXU) != 0) {
            if (errno == EEXIST)
                continue;
            return hostError(errno, parent.path());
        }
        const Result<HostFolder> held = parent.folder(outer.name);
        if (!held || !isOfThisUser(*held))
            return Error{error::AccessDenied, outer.path()};
        if (::mkdirat(static_cast<int>(held->native()), InnerName, Everything) != 0) {
            const Error failure = hostError(errno, outer.path());
            static_cast<void>(removeHostFolder(outer));
            return failure;
        }
        const Result<HostFolder> folder = held->folder(QString::fromLatin1(InnerName));
        return folder ? NewHostFolder({outer, *held, *folder}) : Result<NewHostFolder>(folder.failure());
    }
    return Error{error::FileExists, parent.path()};
}

Status NewHostFolder::putUnder(const QString& name)
{
    const auto from = static_cast<int>(m_state->held.native());
    const auto to = static_cast<int>(m_state->outer.folder.native());
    const QByteArray target = QFile::encodeName(name);
    if (const int failure = renameToFree(from, InnerName, to, target.constData()); failure != 0)
        return hostError(failure == ENOTEMPTY ? EEXIST : failure, m_state->outer.beside(name).path());
    return {};
}

} // namespace quoril
