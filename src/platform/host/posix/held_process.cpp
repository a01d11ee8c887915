#include "platform/host/posix/held_process.h"

#include "platform/host/posix/host_error.h"

#include <QFile>

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace quoril {

namespace {

constexpr int NotRun = 127;

/// What the child needs, made before it exists: it may only call the kernel.
struct Child
{
    explicit Child(const HostCommand& command)
        : program(QFile::encodeName(command.program))
        , folder(QFile::encodeName(command.folder))
        , arguments(command.arguments)
        , environment(command.environment)
        , argumentPointers(pointersTo(arguments))
        , environmentPointers(pointersTo(environment))
    {
    }

    [[noreturn]] void run(int gate, int failure)
    {
        char go = 0;
        // The end of the pipe is that of the program that holds the other one.
        if (::read(gate, &go, 1) != 1)
            ::_exit(NotRun);
        for (int number = 1; number < NSIG; ++number)
            ::signal(number, SIG_DFL);
        sigset_t none;
        ::sigemptyset(&none);
        ::sigprocmask(SIG_SETMASK, &none, nullptr);
        const int null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
        constexpr int kept = STDERR_FILENO + 1;
        const bool isReady = null >= 0 && ::dup2(null, STDIN_FILENO) >= 0 && ::dup2(null, STDOUT_FILENO) >= 0
            && ::dup2(null, STDERR_FILENO) >= 0
            && (failure == kept || ::dup3(failure, kept, O_CLOEXEC) == kept)
            && ::chdir(folder.constData()) == 0;
        ::closefrom(kept + 1);
        if (isReady)
            ::execve(program.constData(), argumentPointers.data(), environmentPointers.data());
        const int number = errno;
        static_cast<void>(!::write(kept, &number, sizeof number));
        ::_exit(NotRun);
    }

    QByteArray program;
    QByteArray folder;
    QList<QByteArray> arguments;
    QList<QByteArray> environment;
    std::vector<char*> argumentPointers;
    std::vector<char*> environmentPointers;
};

} // namespace

Result<std::unique_ptr<HeldProcess>> HeldProcess::start(const HostCommand& command)
{
    std::array<int, 2> gate = {-1, -1};
    std::array<int, 2> failure = {-1, -1};
    if (::pipe2(gate.data(), O_CLOEXEC) != 0)
        return hostError(errno, command.program);
    HostDescriptor gateRead(gate[0]);
    HostDescriptor gateWrite(gate[1]);
    if (::pipe2(failure.data(), O_CLOEXEC) != 0)
        return hostError(errno, command.program);
    HostDescriptor failureRead(failure[0]);
    HostDescriptor failureWrite(failure[1]);
    Child child(command);
    const pid_t pid = ::fork();
    if (pid < 0)
        return hostError(errno, command.program);
    if (pid == 0) {
        ::close(gate[1]);
        child.run(gate[0], failure[1]);
    }
    auto held
        = std::unique_ptr<HeldProcess>(new HeldProcess(pid, std::move(gateWrite), std::move(failureRead)));
    held->m_program = command.program;
    return held;
}

HeldProcess::~HeldProcess()
{
    if (m_pid < 0)
        return;
    ::close(m_gate.release());
    ::waitpid(m_pid, nullptr, 0);
}

Result<std::unique_ptr<HostProcess>> HeldProcess::letGo()
{
    const char go = 1;
    int number = 0;
    const bool isGone = ::write(m_gate.get(), &go, 1) != 1;
    if (isGone || ::read(m_failure.get(), &number, sizeof number) > 0) {
        ::close(m_gate.release());
        ::waitpid(std::exchange(m_pid, -1), nullptr, 0);
        return isGone ? hostError(EPIPE, m_program) : notRun(number, m_program);
    }
    return std::make_unique<HostProcess>(std::exchange(m_pid, -1));
}

} // namespace quoril
