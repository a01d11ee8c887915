#include "platform/tree/machine_choice.h"
#include "platform/tree/tree_machine.h"
#include "platform/windows/windows_machine.h"
#include "platform/windows/windows_session.h"

namespace quoril {

MachineChoice unnamedMachine()
{
    return {{}, MachineChoice::Origin::Live};
}

std::unique_ptr<Machine> openHostMachine()
{
    return openLiveMachine();
}

std::unique_ptr<Session> openHostSession()
{
    return std::make_unique<WindowsSession>();
}

} // namespace quoril
