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
    if (QString folder = qEnvironmentVariable("QUORIL_MACHINE"); !folder.isEmpty())
        return {std::move(folder), MachineChoice::Origin::Environment};
    return unnamedMachine();
}

std::unique_ptr<Machine> openMachine(const MachineChoice& choice)
{
    if (choice.origin == MachineChoice::Origin::Live)
        return openHostMachine();
    const bool exists = QFileInfo(choice.folder).isDir();
    if (!exists && choice.origin == MachineChoice::Origin::UserData) {
        if (const Status status = createSampleMachine(choice.folder); !status)
            say(u"The sample machine can't be made in %1: %2"_s.arg(choice.folder, status.failure().detail));
    } else if (!exists) {
        const QString named = choice.origin == MachineChoice::Origin::Environment
            ? u" (named by QUORIL_MACHINE)"_s
            : QString();
        say(u"The machine %1%2 is no folder."_s.arg(choice.folder, named));
    }
    return std::make_unique<TreeMachine>(choice.folder);
}

} // namespace quoril
