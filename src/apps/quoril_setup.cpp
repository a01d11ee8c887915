// Installs a product as a new service, or updates one of its services, through the dialogs.

#include "platform/machine.h"
#include "platform/machine_choice.h"
#include "platform/terminal.h"
#include "platform/tree/tree_machine.h"
#include "services/installer_command_line.h"
#include "services/setup_arguments.h"
#include "services/update_or_install_service_dialog.h"
#include "shell/quoril_manager_app.h"

#include <QApplication>
#include <QTranslator>

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
    if (!dialog.Outcome)
        return 0;
    if (dialog.Outcome->step != InstallStep::Done)
        return Failed;
    if (hasStream(StandardStream::Output))
        say(dialog.ResultName, StandardStream::Output);
    return 0;
}

/// Says what the command line leads to instead of an installation, in English. Gives the exit code.
int answer(const SetupArguments& arguments)
{
    const bool isHelp = arguments.kind == SetupArguments::Kind::Help;
    say(isHelp ? arguments.message : u"QuorilSetup: "_s + arguments.message,
        isHelp ? StandardStream::Output : StandardStream::Error);
    return isHelp ? 0 : WrongUsage;
}

} // namespace

int main(int argc, char** argv)
{
    const QString version = QStringLiteral(QUORIL_VERSION);
    {
        // The help needs no display, and the machine isn't looked for.
        const QCoreApplication application(argc, argv);
        const SetupArguments asked = SetupArguments::read(QCoreApplication::arguments().mid(0, 2), version);
        if (asked.kind == SetupArguments::Kind::Help)
            return answer(asked);
    }
    // Takes the toolkit's own options out of the command line.
    const QApplication application(argc, argv);
    CQuorilManagerApp::prepare();
    const auto machine = openMachine(chooseMachine({}));
    const ScopedMachine inForce(*machine);
    const SetupArguments arguments = SetupArguments::read(QCoreApplication::arguments(), version);
    if (arguments.kind != SetupArguments::Kind::Run)
        return answer(arguments);
    QTranslator dialogTexts;
    CQuorilManagerApp::applyLanguage(QCoreApplication::applicationDirPath() + u'/', dialogTexts);
    return runDialogs(arguments);
}
