#include "platform/tree/tree_machine.h"

#include "platform/host/host_system.h"

namespace quoril {

TreeMachine::TreeMachine(const QString& root, WorkstationLock lock)
    : m_paths(root)
    , m_registry(m_paths)
    , m_eventLogs(m_paths)
    , m_processes(m_paths)
    , m_files(m_paths)
    , m_systemInfo(m_registry)
    , m_session(openHostSession(m_paths.root(), lock))
    , m_services(makeTreeServiceControl(*this))
{
    reportFileSizeLimits();
}

TreeMachine::~TreeMachine() = default;

} // namespace quoril
