#include "platform/windows/windows_processes.h"

#include "platform/windows/win32.h"

namespace quoril {

namespace {

static_assert(StillActive == STILL_ACTIVE);

class WindowsProcess : public Process
{
public:
    explicit WindowsProcess(KernelHandle handle) : m_handle(std::move(handle)) { }

    bool wait(quint32 milliseconds) override
    {
        return ::WaitForSingleObject(m_handle.get(), milliseconds) == WAIT_OBJECT_0;
    }

    Result<quint32> exitCode() override
    {
        DWORD code = 0;
        if (!::GetExitCodeProcess(m_handle.get(), &code))
            return lastError();
        return quint32(code);
    }

    Status terminate(quint32 exitCode) override
    {
        return statusOfCall(::TerminateProcess(m_handle.get(), exitCode));
    }

private:
    KernelHandle m_handle;
};

} // namespace

Result<std::unique_ptr<Process>> WindowsProcesses::create(
    QStringView applicationName, QStringView commandLine)
{
    const QString application = applicationName.toString();
    QString line = commandLine.toString(); // the call writes into it
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION made = {};
    if (!::CreateProcessW(wideOrNull(application), reinterpret_cast<wchar_t*>(line.data()), nullptr, nullptr,
            FALSE, 0, nullptr, nullptr, &startup, &made))
        return lastError();
    const KernelHandle thread(made.hThread);
    return std::unique_ptr<Process>(std::make_unique<WindowsProcess>(KernelHandle(made.hProcess)));
}

} // namespace quoril
