// The console.

#include "platform/machine_choice.h"
#include "platform/terminal.h"
#include "platform/tree/tree_machine.h"
#include "shell/command_line_info.h"
#include "shell/quoril_manager_app.h"
#ifdef Q_OS_UNIX
#include "platform/host/posix/workstation_lock.h"
#endif

#include <QApplication>

#include <algorithm>
#include <iterator>

namespace {

constexpr QStringView Usage = u"Usage: QuorilManager [file]\n"
                              "Console for the instances of the Quoril emulator on a machine.\n"
                              "\n"
                              "As the first argument:\n"
                              "  -h, --help     Shows this help.\n"
                              "  -v, --version  Shows the version.\n"
                              "\n"
                              "QUORIL_MACHINE names the folder of the machine, a Windows system tree.";

/// How the workstation is locked; null where the system does that by itself.
quoril::WorkstationLock workstationLock()
{
#ifdef Q_OS_UNIX
    return [](const std::stop_token& stop) {
        return quoril::lockWorkstationOverBus({stop, quoril::LockPatience().betweenLooks});
    };
#else
    return nullptr;
#endif
}

} // namespace

int main(int argc, char** argv)
{
    // Neither needs a display.
    using quoril::CommandLineInfo;
    QStringList arguments;
    std::transform(argv, argv + argc, std::back_inserter(arguments),
        [](const char* argument) { return QString::fromLocal8Bit(argument); });
    const auto request = quoril::ParseCommandLine(arguments).request;
    if (request == CommandLineInfo::Request::Help) {
        quoril::say(Usage, quoril::StandardStream::Output);
        return 0;
    }
    if (request == CommandLineInfo::Request::Version) {
        quoril::say(u"QuorilManager " QUORIL_VERSION, quoril::StandardStream::Output);
        return 0;
    }
    const QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("QuorilManager"));
    // The desktop finds the window's entry and icon by it.
    QApplication::setDesktopFileName(QStringLiteral("quoril-services-manager"));
    const auto machine = quoril::openMachine(quoril::chooseMachine({}), workstationLock());
    const quoril::ScopedMachine inForce(*machine);

    quoril::CQuorilManagerApp console;
    return console.InitInstance(QApplication::arguments()) ? QApplication::exec() : 1;
}
