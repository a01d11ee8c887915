#include "platform/windows/windows_processes.h"

#include "platform/command_line.h"
#include "platform/windows/win32.h"

#include <array>
#include <optional>

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

/// The system's program of that bare name. The call itself would look beside this program and in the current
/// folder first, and whoever may write there would choose what is run.
std::optional<QString> systemProgram(const QString& name)
{
    for (const auto folderOf : {::GetSystemDirectoryW, ::GetSystemWindowsDirectoryW}) {
        std::array<wchar_t, MAX_PATH> folder = {};
        const UINT size = folderOf(folder.data(), static_cast<UINT>(folder.size()));
        if (size == 0 || size >= folder.size())
            continue;
        const QString path = textOf(folder.data()) + u'\\' + name;
        const DWORD attributes = ::GetFileAttributesW(wide(path));
        if (attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY))
            return path;
    }
    return std::nullopt;
}

/// The program that is meant, empty where the command line says where it lies.
Result<QString> programOf(const QString& application, const QString& commandLine)
{
    if (isFullPath(application))
        return application;
    if (!application.isEmpty()) {
        const auto found = hasFolder(application) ? std::nullopt : systemProgram(application);
        return found ? Result<QString>(*found) : Error{error::FileNotFound, application};
    }
    for (const ProgramCandidate& candidate : programCandidates(commandLine)) {
        if (isFullPath(candidate.program))
            return QString();
        if (hasFolder(candidate.program))
            continue;
        if (const auto found = systemProgram(withProgramExtension(candidate.program)))
            return *found;
    }
    return Error{error::FileNotFound, commandLine};
}

} // namespace

Result<std::unique_ptr<Process>> WindowsProcesses::create(
    QStringView applicationName, QStringView commandLine)
{
    const Result<QString> application = programOf(applicationName.toString(), commandLine.toString());
    if (!application)
        return application.failure();
    QString line = commandLine.toString(); // the call writes into it
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION made = {};
    if (!::CreateProcessW(wideOrNull(*application), reinterpret_cast<wchar_t*>(line.data()), nullptr, nullptr,
            FALSE, 0, nullptr, nullptr, &startup, &made))
        return lastError();
    const KernelHandle thread(made.hThread);
    return std::unique_ptr<Process>(std::make_unique<WindowsProcess>(KernelHandle(made.hProcess)));
}

Status WindowsProcesses::canRun(QStringView program) const
{
    DWORD kind = 0;
    return statusOfCall(::GetBinaryTypeW(wide(program.toString()), &kind));
}

} // namespace quoril
