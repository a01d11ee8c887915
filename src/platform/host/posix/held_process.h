#pragma once

#include "platform/host/posix/host_descriptor.h"
#include "platform/host/posix/host_process.h"

#include <memory>

namespace quoril {

/// A child process that waits before it runs its program. It runs it when it is let go, and ends when this
/// program ends before that, in whatever way.
class HeldProcess
{
public:
    /// The host's reason. What keeps the program from running shows in letGo().
    static Result<std::unique_ptr<HeldProcess>> start(const HostCommand& command);
    HeldProcess(const HeldProcess&) = delete;
    HeldProcess& operator=(const HeldProcess&) = delete;
    /// A child that was not let go ends.
    ~HeldProcess();

    pid_t pid() const { return m_pid; }

    /// Has it run its program: the process, which by then runs it. Errors as of HostProcess::start().
    Result<std::unique_ptr<HostProcess>> letGo();

private:
    HeldProcess(pid_t pid, HostDescriptor gate, HostDescriptor failure)
        : m_pid(pid)
        , m_gate(std::move(gate))
        , m_failure(std::move(failure))
    {
    }

    pid_t m_pid; // -1 once it was handed over
    HostDescriptor m_gate; // a byte written here lets it go
    HostDescriptor m_failure; // the error number of a program that can't be run; closed by one that runs
    QString m_program;
};

} // namespace quoril
