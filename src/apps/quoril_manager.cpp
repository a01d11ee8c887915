// The console.

#include "platform/tree/machine_choice.h"
#include "platform/tree/tree_machine.h"
#include "shell/quoril_manager_app.h"

#include <QApplication>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("QuorilManager"));
    const auto machine = quoril::openMachine(quoril::chooseMachine({}));
    const quoril::ScopedMachine inForce(*machine);

    quoril::CQuorilManagerApp console(application);
    return console.InitInstance(QApplication::arguments()) ? QApplication::exec() : 1;
}
