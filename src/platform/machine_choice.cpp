#include "platform/machine_choice.h"

#include "platform/terminal.h"
#include "platform/tree/sample_machine.h"
#include "platform/tree/tree_machine.h"

#include <QFileInfo>

namespace quoril {

using namespace Qt::StringLiterals;

MachineChoice chooseMachine(const QString& option)
{
    if (!option.isEmpty())
        return {option, MachineChoice::Origin::Option};
    // One that is set and empty names no machine either, and not the one that is had without it.
    if (qEnvironmentVariableIsSet("QUORIL_MACHINE"))
        return {qEnvironmentVariable("QUORIL_MACHINE"), MachineChoice::Origin::Environment};
    return unnamedMachine();
}

std::unique_ptr<Machine> openMachine(const MachineChoice& choice, WorkstationLock lock)
{
    if (choice.origin == MachineChoice::Origin::Live)
        return openHostMachine();
    const bool exists = QFileInfo(choice.folder).isDir();
    if (!exists && choice.origin == MachineChoice::Origin::UserData) {
        const Status status = createSampleMachine(choice.folder);
        if (status)
            say(u"A sample machine was made in %1."_s.arg(choice.folder));
        else if (status.errorNumber() != error::FileExists)
            say(u"The sample machine can't be made in %1: %2"_s.arg(choice.folder, status.failure().detail));
    } else if (choice.folder.isEmpty()) {
        say(u"QUORIL_MACHINE is set and empty; give it the folder of a machine, or unset it."_s);
    } else if (!exists) {
        const QString named = choice.origin == MachineChoice::Origin::Environment
            ? u" (named by QUORIL_MACHINE)"_s
            : QString();
        say(u"The machine %1%2 is not a folder."_s.arg(choice.folder, named));
    }
    return std::make_unique<TreeMachine>(choice.folder, lock);
}

} // namespace quoril
