#include "platform/machine.h"

#include <QtGlobal>

namespace quoril {

namespace {
Machine* g_machine = nullptr;
} // namespace

Machine& machine()
{
    Q_ASSERT_X(g_machine, "machine", "no machine was put in force");
    return *g_machine;
}

ScopedMachine::ScopedMachine(Machine& inForce) : m_before(g_machine)
{
    g_machine = &inForce;
}

ScopedMachine::~ScopedMachine()
{
    g_machine = m_before;
}

} // namespace quoril
