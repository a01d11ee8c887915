// The console.

#include "platform/machine_choice.h"
#include "platform/terminal.h"
#include "platform/tree/tree_machine.h"
#include "shell/quoril_manager_app.h"

#include <QApplication>

#include <algorithm>
#include <initializer_list>
#include <string_view>

namespace {

constexpr QStringView Usage = u"Usage: QuorilManager [file]\n"
                              "Console for the instances of the Quoril emulator on a machine.\n"
                              "\n"
                              "  -h, --help     Shows this help.\n"
                              "  -v, --version  Shows the version.\n"
                              "\n"
                              "QUORIL_MACHINE names the folder of the machine, a Windows system tree.";

} // namespace

int main(int argc, char** argv)
{
    // Neither needs a display.
    const auto asked = [argc, argv](std::initializer_list<std::string_view> options) {
        return std::find_first_of(argv + 1, argv + argc, options.begin(), options.end()) != argv + argc;
    };
    if (asked({"-h", "--help"})) {
        quoril::say(Usage, quoril::StandardStream::Output);
        return 0;
    }
    if (asked({"-v", "--version"})) {
        quoril::say(u"QuorilManager " QUORIL_VERSION, quoril::StandardStream::Output);
        return 0;
    }
    const QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("QuorilManager"));
    // The desktop finds the window's entry and icon by it.
    QApplication::setDesktopFileName(QStringLiteral("quoril-services-manager"));
    const auto machine = quoril::openMachine(quoril::chooseMachine({}));
    const quoril::ScopedMachine inForce(*machine);

    quoril::CQuorilManagerApp console;
    return console.InitInstance(QApplication::arguments()) ? QApplication::exec() : 1;
}
