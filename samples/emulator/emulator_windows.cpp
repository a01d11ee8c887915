// The emulator's side of a Windows that it runs on: a service of the service control manager.

#include "emulator.h"
#include "emulator_log.h"

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

/// What the service's main function, which the manager calls in a thread of its own, takes from the process's
/// one.
Behaviour behaviourOfService;

class WindowsController : public Controller
{
public:
    explicit WindowsController(QString service)
        : m_service(std::move(service))
        , m_stop(::CreateEventW(nullptr, TRUE, FALSE, nullptr))
        , m_status(::RegisterServiceCtrlHandlerExW(wide(m_service), handleControl, m_stop.get()))
    {
    }

    QString serviceName() const override { return m_service; }
    void reportStartPending(quint32 checkPoint, quint32 waitHint) override
    {
        report(SERVICE_START_PENDING, 0, checkPoint, waitHint);
    }
    void reportRunning() override { report(SERVICE_RUNNING, 0, 0, 0); }
    void reportStopPending(quint32 waitHint) override { report(SERVICE_STOP_PENDING, 0, 1, waitHint); }
    void reportStopped(quint32 exitCode) override
    {
        m_hasStopped = true;
        report(SERVICE_STOPPED, exitCode, 0, 0);
    }
    bool waitForStop(std::optional<quint32> milliseconds) override
    {
        const bool asked
            = ::WaitForSingleObject(m_stop.get(), milliseconds.value_or(INFINITE)) == WAIT_OBJECT_0;
        // The next request is another one.
        ::ResetEvent(m_stop.get());
        return asked;
    }

    bool hasStopped() const { return m_hasStopped; }

private:
    static DWORD WINAPI handleControl(DWORD code, DWORD, void*, void* stop)
    {
        if (code == SERVICE_CONTROL_INTERROGATE)
            return NO_ERROR;
        if (code != SERVICE_CONTROL_STOP)
            return ERROR_CALL_NOT_IMPLEMENTED;
        ::SetEvent(static_cast<HANDLE>(stop));
        return NO_ERROR;
    }

    // A report that can't be made ends in the manager's time limit.
    void report(DWORD state, DWORD exitCode, DWORD checkPoint, DWORD waitHint)
    {
        SERVICE_STATUS status = {};
        status.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
        status.dwCurrentState = state;
        status.dwControlsAccepted = state == SERVICE_RUNNING ? SERVICE_ACCEPT_STOP : 0;
        status.dwWin32ExitCode = exitCode;
        status.dwCheckPoint = checkPoint;
        status.dwWaitHint = waitHint;
        ::SetServiceStatus(m_status, &status);
    }

    QString m_service;
    KernelHandle m_stop;
    SERVICE_STATUS_HANDLE m_status;
    bool m_hasStopped = false;
};

void WINAPI serviceMain(DWORD argumentCount, wchar_t** arguments)
{
    const auto machine = openLiveMachine();
    WindowsController controller(argumentCount > 0 ? textOf(arguments[0]) : QString());
    const int status = runService(*machine, controller, behaviourOfService);
    // A service that ends without a word ends as a process does that was aborted.
    if (!controller.hasStopped())
        ::ExitProcess(static_cast<UINT>(status));
}

} // namespace

bool appendToFile(Machine&, const QString& path, const QByteArray& bytes)
{
    const Result<QString> name = callPath(path);
    if (!name)
        return false;
    const HANDLE opened
        = ::CreateFileW(wide(*name), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
            nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (opened == INVALID_HANDLE_VALUE)
        return false;
    const KernelHandle file(opened);
    // One write at the end: lines of several writers don't mix.
    DWORD written = 0;
    const auto size = static_cast<DWORD>(bytes.size());
    return ::WriteFile(file.get(), bytes.constData(), size, &written, nullptr) && written == size;
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
        say(stderr, u"quoril-emulator: unknown option; --help tells the known ones"_s);
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
    say(stderr, u"The emulator runs as a service: install it and start that."_s);
    return FailedStatus;
}

} // namespace quoril::emulator
