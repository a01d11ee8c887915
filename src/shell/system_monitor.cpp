#include "shell/system_monitor.h"

#include "platform/machine.h"
#include "platform/session.h"
#include "platform/system_info.h"
#include "resources/resource_module.h"
#include "resources/text_ids.h"

namespace quoril {

using namespace Qt::StringLiterals;

QString SystemMonitor::show()
{
    if (const auto window = machine().session().findWindow(loadText(text::PerformanceMonitor))) {
        if (window->isIconic())
            window->restore();
        window->bringForward();
        return {};
    }
    auto process = machine().processes().create(u"perfmon.exe", u"perfmon.exe");
    // A failed start drops an earlier monitor too: it is no longer ours to end.
    m_monitorProcess = nullptr;
    if (process) {
        m_monitorProcess = *std::move(process);
        return {};
    }
    const QString statement = loadText(text::MonitorNotStarted);
    if (statement.isEmpty())
        return {};
    return statement + u" : "_s + FormatSystemError(process.failure().number);
}

void SystemMonitor::StopMonitorAtExit()
{
    if (!m_monitorProcess)
        return;
    // The monitor may have ended by itself; there is nobody left to tell.
    static_cast<void>(m_monitorProcess->terminate(0));
    m_monitorProcess.reset();
}

QString FormatSystemError(quint32 code)
{
    const QString number = u"0x"_s + QString::number(code, 16).toUpper();
    const QString systemText = machine().systemInfo().errorText(code);
    return systemText.isEmpty() ? number : systemText + u" ("_s + number + u')';
}

} // namespace quoril
