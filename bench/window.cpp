// Brings a window up off screen, as one process that ends once it is painted, to be timed:
//     window FOLDER     the console over the machine in that folder, with its tree filled and painted
//     window            an empty main window of Qt, painted
#include "platform/tree/tree_machine.h"
#include "shell/quoril_manager_app.h"

#include <QApplication>
#include <QFile>
#include <QMainWindow>

#include <cstdlib>

namespace {

int showConsole(const QString& folder, const QStringList& arguments)
{
    quoril::TreeMachine machine(folder);
    const quoril::ScopedMachine inForce(machine);
    quoril::CQuorilManagerApp console;
    if (!console.InitInstance({arguments[0]}))
        return 1;
    QApplication::processEvents();
    std::_Exit(0); // what the end takes is no part of it
}

int showNothing()
{
    QMainWindow window;
    window.resize(1024, 768);
    window.show();
    window.repaint();
    QApplication::processEvents();
    std::_Exit(0);
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    return argc > 1 ? showConsole(QFile::decodeName(argv[1]), QApplication::arguments()) : showNothing();
}
