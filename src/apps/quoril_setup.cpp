// Installs a product as a new service, or updates one of its services, through the dialogs.

#include "platform/machine.h"
#include "platform/machine_choice.h"
#include "platform/terminal.h"
#include "platform/tree/tree_machine.h"
#include "services/installer_command_line.h"
#include "services/setup_arguments.h"
#include "services/update_or_install_service_dialog.h"
#include "shell/language_module.h"
#include "shell/quoril_manager_app.h"

#include <QApplication>

namespace {

using namespace quoril;
using namespace Qt::StringLiterals;

constexpr int Failed = 1;
constexpr int WrongUsage = 2;

int runDialogs(const SetupArguments& arguments)
{
    CheckedInstaller installer;
    UpdateOrInstallServiceDlg dialog(nullptr);
    dialog.ProductName = arguments.productName;
    dialog.CfgFile = arguments.configurationFile;
    dialog.ImagePath = arguments.imagePath;
    dialog.Installer = &installer;
    dialog.exec();
    if (installer.installed() > 0 && hasStream(StandardStream::Output))
        say(dialog.ResultName, StandardStream::Output);
    return installer.installed() == installer.asked() ? 0 : Failed;
}

/// Reads the command line, which needs no display. The machine is in force meanwhile.
SetupArguments readArguments(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const auto machine = openMachine(chooseMachine({}));
    const ScopedMachine inForce(*machine);
    LoadLanguageModule(QCoreApplication::applicationDirPath() + u'/');
    return SetupArguments::read(QCoreApplication::arguments(), QStringLiteral(QUORIL_VERSION));
}

} // namespace

int main(int argc, char** argv)
{
    const SetupArguments arguments = readArguments(argc, argv);
    if (arguments.kind != SetupArguments::Kind::Run) {
        const bool isHelp = arguments.kind == SetupArguments::Kind::Help;
        say(isHelp ? arguments.told : u"QuorilSetup: "_s + arguments.told,
            isHelp ? StandardStream::Output : StandardStream::Error);
        return isHelp ? 0 : WrongUsage;
    }
    const QApplication application(argc, argv);
    CQuorilManagerApp::Prepare();
    const auto machine = openMachine(chooseMachine({}));
    const ScopedMachine inForce(*machine);
    return runDialogs(arguments);
}
