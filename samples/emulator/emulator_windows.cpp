// The emulator's side of a Windows that it runs on: a service of the service control manager.

#include "emulator.h"
#include "emulator_log.h"

#include "platform/terminal.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_machine.h"
#include "platform/windows/windows_paths.h"

#include <QCoreApplication>
#include <QDir>

#include <optional>

namespace quoril::emulator {

using namespace Qt::StringLiterals;

namespace {

constexpr int FailedStatus = 1;
constexpr quint32 UsualStopMilliseconds = 500;

/// What the service's main function, which the manager calls in a thread of its own, takes from the process's
/// one.
Behaviour behaviourOfService;

class WindowsController : public Controller
{
public:
    explicit WindowsController(QString service)
        : m_service(std::move(service))
        , m_stop(::CreateEventW(nullptr, FALSE, FALSE, nullptr))
        , m_status(::RegisterServiceCtrlHandlerExW(wide(m_service), handleControl, this))
    {
    }

    QString serviceName() const override { return m_service; }
    void reportStartPending(quint32 checkPoint, quint32 waitHint) override
    {
        report(SERVICE_START_PENDING, 0, checkPoint, waitHint);
    }
    void reportRunning() override { report(SERVICE_RUNNING, 0, 0, 0); }
    void reportStopPending(quint32 waitHint) override { report(SERVICE_STOP_PENDING, 0, 1, waitHint); }
    void reportStopped(quint32 exitCode) override { m_exitCode = exitCode; }
    bool waitForStop(std::optional<quint32> milliseconds) override
    {
        // The wait takes the request; one that comes at this moment stays for the next.
        return ::WaitForSingleObject(m_stop.get(), milliseconds.value_or(INFINITE)) == WAIT_OBJECT_0;
    }

    /// The last thing that a service does: the system may end the process right after. False if it hasn't
    /// stopped.
    bool tellEnd()
    {
        if (m_exitCode)
            report(SERVICE_STOPPED, *m_exitCode, 0, 0);
        return m_exitCode.has_value();
    }

private:
    static DWORD WINAPI handleControl(DWORD code, DWORD, void*, void* context)
    {
        if (code == SERVICE_CONTROL_INTERROGATE)
            return NO_ERROR;
        if (code != SERVICE_CONTROL_STOP && code != SERVICE_CONTROL_SHUTDOWN)
            return ERROR_CALL_NOT_IMPLEMENTED;
        auto* const self = static_cast<WindowsController*>(context);
        // Whoever asked sees at once that the request has arrived.
        if (!behaviourOfService.ignoresStop)
            self->reportStopPending(behaviourOfService.stopDelayMilliseconds + UsualStopMilliseconds);
        ::SetEvent(self->m_stop.get());
        return NO_ERROR;
    }

    // A report that can't be made ends in the manager's time limit.
    void report(DWORD state, DWORD exitCode, DWORD checkPoint, DWORD waitHint)
    {
        SERVICE_STATUS status = {};
        status.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
        status.dwCurrentState = state;
        status.dwControlsAccepted
            = state == SERVICE_RUNNING ? SERVICE_ACCEPT_STOP | SERVICE_ACCEPT_SHUTDOWN : 0;
        status.dwWin32ExitCode = exitCode;
        status.dwCheckPoint = checkPoint;
        status.dwWaitHint = waitHint;
        ::SetServiceStatus(m_status, &status);
    }

    QString m_service;
    KernelHandle m_stop;
    SERVICE_STATUS_HANDLE m_status;
    std::optional<quint32> m_exitCode; // of a service that has stopped
};

void WINAPI serviceMain(DWORD argumentCount, wchar_t** arguments)
{
    WindowsController controller(argumentCount > 0 ? textOf(arguments[0]) : QString());
    const int status = runService(*openLiveMachine(), controller, behaviourOfService);
    // A service that ends without a word ends as a process does that was aborted.
    if (!controller.tellEnd())
        ::ExitProcess(static_cast<UINT>(status));
}

} // namespace

bool appendToFile(Machine&, const QString& path, const QByteArray& bytes)
{
    const Result<KernelHandle> file = openDiskFile(path, FILE_APPEND_DATA, OPEN_ALWAYS);
    if (!file)
        return false;
    // One write at the end: lines of several writers don't mix.
    DWORD written = 0;
    const auto size = static_cast<DWORD>(bytes.size());
    return ::WriteFile(file->get(), bytes.constData(), size, &written, nullptr) && written == size;
}

int runOnPlatform(const QStringList& arguments)
{
    if (!arguments.isEmpty() && arguments.first() == u"--install") {
        const auto machine = openLiveMachine();
        const QString self = QDir::toNativeSeparators(QCoreApplication::applicationFilePath());
        return static_cast<int>(installByArguments(*machine, arguments, self));
    }
    const std::optional<Behaviour> behaviour = Behaviour::from(arguments);
    if (!behaviour) {
        say(u"quoril-emulator: can't read the options \"%1\"; --help lists those there are"_s.arg(
            arguments.join(u' ')));
        return FailedStatus;
    }
    behaviourOfService = *behaviour;
    // It doesn't even connect; the manager gives up after its time limit.
    if (behaviour->reportsNothing)
        ::Sleep(INFINITE);
    wchar_t noName[] = L"";
    const SERVICE_TABLE_ENTRYW table[] = {{noName, serviceMain}, {nullptr, nullptr}};
    if (::StartServiceCtrlDispatcherW(table))
        return 0;
    say(u"quoril-emulator runs as a service: register one with --install, then start that."_s);
    return FailedStatus;
}

} // namespace quoril::emulator
