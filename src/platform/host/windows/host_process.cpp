// On Windows a tree is examined and configured; nothing in it is run. It is another machine's disk, whose
// programs and services would act on this one.
#include "platform/host/host_command.h"
#include "platform/host/host_file.h"
#include "platform/host/process_identity.h"

#include <QFileInfo>

namespace quoril {

using namespace Qt::StringLiterals;

Result<std::unique_ptr<Process>> startHostProgram(const HostCommand& command)
{
    return canRunHostProgram(command.program).failure();
}

Status canRunHostProgram(const QString& hostPath)
{
    return Error{error::NotSupported, hostPath + u" lies in a tree, and its programs are not run here"_s};
}

bool isHostProgram(const QString& hostPath)
{
    const QFileInfo info(hostPath);
    const Result<HostFolder> folder = HostFolder::open(info.path());
    if (!folder)
        return false;
    const auto file = openRegularFile({*folder, info.fileName()}, HostOpen::Read);
    return file && (*file)->read(2) == "MZ";
}

// A state that a tree's service manager recorded elsewhere speaks of processes of that host: here none of
// them is alive.
std::optional<ProcessIdentity> ProcessIdentity::of(int)
{
    return std::nullopt;
}

bool ProcessIdentity::isAlive() const
{
    return false;
}

bool ProcessIdentity::signal(int) const
{
    return false;
}

} // namespace quoril
