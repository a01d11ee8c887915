#pragma once

#include "services/service_app.h"
#include "services/service_installation.h"

#include <QString>

namespace quoril {

/// Why the command line of the product's executable can't carry the request as it is meant, in the words for
/// the person; empty if it can. A double quote or a backslash at the end of a name or path would shift where
/// its arguments end, a control character may end the line, and Windows takes 32,766 characters at most. The
/// path of the executable may stand in double quotes as a whole.
QString unsafeArgument(const InstallRequest& request);

/// A file that a person named for an installation.
struct InstallerFile
{
    QString path; ///< in full on the machine
    QString failure; ///< why there is none, in the words for the person
};

/// The file that a command line names: a path of the machine, in double quotes as a whole or not, or else a
/// path of the host that leads onto the machine.
InstallerFile findInstallerFile(const QString& named);

/// Installs what the command line can carry, and updates to what can be run. Anything else is refused with a
/// message before anything is changed. For callers whose names and paths nobody has looked at.
class CheckedInstaller : public ServiceApp
{
public:
    InstallOutcome InstallService(const InstallRequest& request, UserPrompts& prompts) override;
};

} // namespace quoril
