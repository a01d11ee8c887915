// The console's work for scripts: one subcommand, one result.

#include "ctl/ctl.h"
#include "platform/machine_choice.h"
#include "platform/terminal.h"
#include "platform/tree/message_table.h"
#include "platform/tree/sample_machine.h"
#include "platform/tree/tree_machine.h"
#include "resources/resource_module.h"
#include "resources/text_ids.h"

#include <QCoreApplication>
#include <QFileInfo>

namespace {

using namespace quoril;

Error noMachine(const QString& folder, quint32 number)
{
    // Only the environment names a machine by nothing.
    if (folder.isEmpty())
        return {number,
            QStringLiteral("QUORIL_MACHINE is set and empty; give it the folder of a machine, or unset it.")};
    QString message = loadText(text::MachineNotOpened);
    for (const QString& part : {folder, numberedWindowsMessage(number)})
        message.replace(message.indexOf(QStringLiteral("%s")), 2, part);
    return {number, message};
}

Result<std::shared_ptr<Machine>> openChosen(const QString& folder)
{
    const MachineChoice choice = chooseMachine(folder);
    if (choice.origin == MachineChoice::Origin::Live)
        return std::shared_ptr<Machine>(openHostMachine());
    if (!QFileInfo(choice.folder).isDir()) {
        if (choice.origin != MachineChoice::Origin::UserData)
            return noMachine(choice.folder, error::PathNotFound);
        const Status made = createSampleMachine(choice.folder);
        if (made)
            say(QStringLiteral("A sample machine was made in %1.").arg(choice.folder));
        else if (made.errorNumber() != error::FileExists)
            return noMachine(choice.folder, made.errorNumber());
    }
    // It goes with the process: freed key by key, the registry of many instances takes a fifth of the run.
    static TreeMachine* const tree = std::make_unique<TreeMachine>(choice.folder).release();
    return std::shared_ptr<Machine>(tree, [](Machine*) {});
}

void dropMessage(QtMsgType, const QMessageLogContext&, const QString&) { }

} // namespace

int main(int argc, char** argv)
{
    // In a locale of scripts, such as C, Qt reports that it takes UTF-8 all the same. Nobody has to know.
    const QtMessageHandler before = qInstallMessageHandler(dropMessage);
    const QCoreApplication application(argc, argv);
    qInstallMessageHandler(before);
    QCoreApplication::setApplicationName(QStringLiteral("quorilctl"));
    Console console(stdin, stdout, stderr, Console::prepareStandard());
    return runCtl(QCoreApplication::arguments(), console, openChosen);
}
