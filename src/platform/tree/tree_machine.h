#pragma once

#include "platform/host/host_session.h"
#include "platform/machine.h"
#include "platform/services.h"
#include "platform/session.h"
#include "platform/system_clock.h"
#include "platform/tree/tree_event_logs.h"
#include "platform/tree/tree_files.h"
#include "platform/tree/tree_paths.h"
#include "platform/tree/tree_processes.h"
#include "platform/tree/tree_registry.h"
#include "platform/tree/tree_system_info.h"

#include <QString>

#include <memory>

namespace quoril {

/// A machine that is kept as a Windows system tree in a folder of the host.
class TreeMachine : public Machine
{
public:
    /// The tree's folder is the drive C:. One that is missing makes a machine whose registry has no hives.
    explicit TreeMachine(const QString& root, WorkstationLock lock = nullptr);
    ~TreeMachine() override;

    TreeRegistry& registry() override { return m_registry; }
    ServiceControl& services() override { return *m_services; }
    EventLogs& eventLogs() override { return m_eventLogs; }
    TreeProcesses& processes() override { return m_processes; }
    Files& files() override { return m_files; }
    SystemInfo& systemInfo() override { return m_systemInfo; }
    Session& session() override { return *m_session; }
    Clock& clock() override { return m_clock; }
    TreeMachine* tree() override { return this; }

    /// The machine's paths and where they lie on the host.
    TreePaths& paths() { return m_paths; }

private:
    TreePaths m_paths;
    SystemClock m_clock;
    TreeRegistry m_registry;
    TreeEventLogs m_eventLogs;
    TreeProcesses m_processes;
    TreeFiles m_files;
    TreeSystemInfo m_systemInfo;
    std::unique_ptr<Session> m_session;
    std::unique_ptr<ServiceControl> m_services; // uses the others, so it goes first
};

/// The service manager of the tree. The machine is not owned and lives longer.
std::unique_ptr<ServiceControl> makeTreeServiceControl(TreeMachine& machine);

} // namespace quoril
