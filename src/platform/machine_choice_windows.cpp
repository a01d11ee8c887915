#include "platform/machine_choice.h"

#include "platform/windows/windows_machine.h"

namespace quoril {

MachineChoice unnamedMachine()
{
    return {{}, MachineChoice::Origin::Live};
}

std::unique_ptr<Machine> openHostMachine()
{
    return openLiveMachine();
}

} // namespace quoril
