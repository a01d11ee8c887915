#pragma once

#include <QString>
#include <QStringView>

namespace quoril {

/// The registered message by which every program learns of a service that was installed.
inline constexpr QStringView NewServiceInstalledMessage = u"WM_NEW_SERVICE_INSTALLED_MSG";

/// What is to be installed.
struct InstallRequest
{
    QString serviceName;
    QString configurationFile; ///< a path of the machine
    bool isUpdate = false; ///< the service of that name is removed first
    QString imagePath; ///< of the product's executable on the machine, with or without double quotes
};

enum class InstallStep
{
    Refused, ///< by an installer that looks at names and paths first; nothing was changed
    Arguments, ///< name or configuration file are empty
    ImagePath, ///< the path of the executable is empty
    Removal, ///< the old service is still there
    Directory, ///< the executable's folder can't be entered; an old service is gone
    Executable, ///< the executable failed; an old service is gone
    Done
};

/// The step that an installation failed at, or Done. The result is 0 for missing arguments, the executable's
/// exit code where it ran (-1 is its success, 2 if it could not be created), -1 otherwise.
struct InstallOutcome
{
    InstallStep step = InstallStep::Done;
    int result = 0;
};

} // namespace quoril
