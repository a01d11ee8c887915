#include "platform/windows/windows_machine.h"

#include "platform/system_clock.h"
#include "platform/windows/windows_event_logs.h"
#include "platform/windows/windows_files.h"
#include "platform/windows/windows_processes.h"
#include "platform/windows/windows_registry.h"
#include "platform/windows/windows_services.h"
#include "platform/windows/windows_session.h"
#include "platform/windows/windows_system_info.h"

namespace quoril {

namespace {

class WindowsMachine : public Machine
{
public:
    Registry& registry() override { return m_registry; }
    ServiceControl& services() override { return m_services; }
    EventLogs& eventLogs() override { return m_eventLogs; }
    Processes& processes() override { return m_processes; }
    Files& files() override { return m_files; }
    SystemInfo& systemInfo() override { return m_systemInfo; }
    Session& session() override { return m_session; }
    Clock& clock() override { return m_clock; }

private:
    WindowsRegistry m_registry;
    WindowsServiceControl m_services;
    WindowsEventLogs m_eventLogs;
    WindowsProcesses m_processes;
    WindowsFiles m_files;
    WindowsSystemInfo m_systemInfo;
    WindowsSession m_session;
    SystemClock m_clock;
};

} // namespace

std::unique_ptr<Machine> openLiveMachine()
{
    return std::make_unique<WindowsMachine>();
}

} // namespace quoril
