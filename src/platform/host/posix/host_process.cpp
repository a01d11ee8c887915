#include "platform/host/posix/host_process.h"

#include "platform/host/exit_code.h"
#include "platform/host/host_file.h"
#include "platform/host/posix/host_error.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr quint32 StatusAccessViolation = 0xC0000005;
constexpr quint32 StatusIllegalInstruction = 0xC000001D;
constexpr quint32 StatusDivideByZero = 0xC0000094;
constexpr quint32 AbortExitCode = 3;

/// Nothing open but what it is given, default signals: a child that inherits neither.
class SpawnSetup
{
public:
    SpawnSetup(const QByteArray& folder, int output, int exitCodeFile)
    {
        posix_spawn_file_actions_init(&actions);
        posix_spawnattr_init(&attributes);
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        if (output >= 0)
            posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
        else
            posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        const bool hasFile = exitCodeFile >= 0;
        if (hasFile)
            posix_spawn_file_actions_adddup2(&actions, exitCodeFile, ExitCodeDescriptor);
        posix_spawn_file_actions_addclosefrom_np(
            &actions, (hasFile ? ExitCodeDescriptor : STDERR_FILENO) + 1);
        posix_spawn_file_actions_addchdir_np(&actions, folder.constData());
        sigset_t signalSet;
        sigemptyset(&signalSet);
        posix_spawnattr_setsigmask(&attributes, &signalSet);
        sigfillset(&signalSet);
        posix_spawnattr_setsigdefault(&attributes, &signalSet);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~SpawnSetup()
    {
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attributes);
    }
    SpawnSetup(const SpawnSetup&) = delete;
    SpawnSetup& operator=(const SpawnSetup&) = delete;

    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
};

quint32 codeOfSignal(int signal)
{
    switch (signal) {
    case SIGSEGV:
    case SIGBUS:
        return StatusAccessViolation;
    case SIGILL:
        return StatusIllegalInstruction;
    case SIGFPE:
        return StatusDivideByZero;
    case SIGINT:
    case SIGTERM:
    case SIGHUP:
        return StatusControlCExit;
    case SIGABRT:
        return AbortExitCode;
    default:
        return 1;
    }
}

/// Waits until the process ends or the time is up; by a handle of it where the kernel has such handles.
void waitForEnd(pid_t pid, std::chrono::milliseconds time)
{
    using namespace std::chrono_literals;
    const auto handle = static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
    if (handle < 0) {
        std::this_thread::sleep_for(std::min(time, std::chrono::milliseconds(10ms)));
        return;
    }
    pollfd ended = {.fd = handle, .events = POLLIN, .revents = 0};
    ::poll(&ended, 1, static_cast<int>(std::min<std::chrono::milliseconds>(time, 1000ms).count()));
    ::close(handle);
}

} // namespace

std::vector<char*> pointersTo(QList<QByteArray>& texts)
{
    std::vector<char*> pointers;
    pointers.reserve(static_cast<std::size_t>(texts.size()) + 1);
    for (QByteArray& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

Error notRun(int number, const QString& program)
{
    // The file exists: "not found" speaks of the interpreter that a script or program asks for, and "denied"
    // for a file that can be read says that the host doesn't take it for a program.
    const bool isNoProgram = number == ENOENT
        || (number == EACCES && ::access(QFile::encodeName(program).constData(), R_OK) == 0);
    return isNoProgram ? Error{error::BadExeFormat, program} : hostError(number, program);
}

Result<std::unique_ptr<HostProcess>> HostProcess::start(const HostCommand& command)
{
    const QByteArray program = QFile::encodeName(command.program);
    QList<QByteArray> arguments = command.arguments;
    QList<QByteArray> environment = command.environment;
    const int exitCodeFile = command.asksForExitCode ? makeExitCodeFile() : -1;
    if (exitCodeFile >= 0)
        environment.append(ExitCodeVariable.toLatin1() + '=' + QByteArray::number(ExitCodeDescriptor));
    const SpawnSetup setup(QFile::encodeName(command.folder), command.output, exitCodeFile);
    pid_t pid = 0;
    const int failure = ::posix_spawn(&pid, program.constData(), &setup.actions, &setup.attributes,
        pointersTo(arguments).data(), pointersTo(environment).data());
    if (failure == 0)
        return std::make_unique<HostProcess>(pid, exitCodeFile);
    if (exitCodeFile >= 0)
        ::close(exitCodeFile);
    return notRun(failure, command.program);
}

HostProcess::HostProcess(pid_t pid, int exitCodeFile) : m_pid(pid), m_exitCodeFile(exitCodeFile) { }

HostProcess::~HostProcess()
{
    if (m_exitCodeFile >= 0)
        ::close(m_exitCodeFile);
    if (reap())
        return;
    try {
        std::thread([pid = m_pid] { ::waitpid(pid, nullptr, 0); }).detach();
    } catch (const std::system_error&) {
        // No thread is to be had: what is left of the process goes with this program.
    }
}

bool HostProcess::reap()
{
    if (m_status)
        return true;
    int status = 0;
    if (::waitpid(m_pid, &status, WNOHANG) != m_pid)
        return false;
    m_status = status;
    return true;
}

bool HostProcess::wait(quint32 milliseconds)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    while (!reap()) {
        const auto left
            = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        if (left.count() <= 0)
            return false;
        waitForEnd(m_pid, left);
    }
    return true;
}

Result<quint32> HostProcess::exitCode()
{
    if (!reap())
        return StillActive;
    if (WIFEXITED(*m_status))
        return exitCodeOf(WEXITSTATUS(*m_status), m_exitCodeFile);
    if (m_terminationCode && WTERMSIG(*m_status) == SIGKILL)
        return *m_terminationCode;
    return codeOfSignal(WTERMSIG(*m_status));
}

Status HostProcess::terminate(quint32 exitCode)
{
    // A process that was reaped has lost its number, which may be another's by now.
    if (reap())
        return Error{error::AccessDenied, {}};
    if (::kill(m_pid, SIGKILL) != 0)
        return hostError(errno);
    m_terminationCode = exitCode;
    return {};
}

Result<std::unique_ptr<Process>> startHostProgram(const HostCommand& command)
{
    Result<std::unique_ptr<HostProcess>> process = HostProcess::start(command);
    if (!process)
        return process.failure();
    return std::unique_ptr<Process>(*std::move(process));
}

Status canRunHostProgram(const QString& hostPath)
{
    if (isHostProgram(hostPath) && ::access(QFile::encodeName(hostPath).constData(), X_OK) == 0)
        return {};
    return Error{error::BadExeFormat, hostPath + u" is no program that can be run here"_s};
}

bool isHostProgram(const QString& hostPath)
{
    const QFileInfo info(hostPath);
    const Result<HostFolder> folder = HostFolder::open(info.path());
    const auto file = folder ? openRegularFile({*folder, info.fileName()}, HostOpen::Read)
                             : Result<std::unique_ptr<QFile>>(folder.failure());
    const QByteArray magic = file ? (*file)->read(4) : QByteArray();
    constexpr QByteArrayView elf = "\x7f\x45\x4c\x46";
    return magic == elf || magic.startsWith("#!");
}

} // namespace quoril
