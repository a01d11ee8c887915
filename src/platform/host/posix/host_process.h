#pragma once

#include "platform/host/host_command.h"
#include "platform/processes.h"

#include <optional>
#include <sys/types.h>
#include <vector>

namespace quoril {

/// A child process of the host. It is not left behind as a zombie, whoever drops the object when, as long as
/// a thread can be had to wait for it.
class HostProcess : public Process
{
public:
    /// 193 for a file that the host can't run, else the host's reason.
    static Result<std::unique_ptr<HostProcess>> start(const HostCommand& command);

    /// Takes over the descriptor of the file for the exit code, if there is one.
    explicit HostProcess(pid_t pid, int exitCodeFile = -1);
    ~HostProcess() override;
    HostProcess(const HostProcess&) = delete;
    HostProcess& operator=(const HostProcess&) = delete;

    pid_t pid() const { return m_pid; }

    bool wait(quint32 milliseconds) override;
    Result<quint32> exitCode() override;
    Status terminate(quint32 exitCode) override;

private:
    bool reap();

    pid_t m_pid;
    int m_exitCodeFile;
    std::optional<int> m_status;
    std::optional<quint32> m_terminationCode;
};

/// Pointers to the texts as the kernel takes them, the last one null; valid as long as the list.
std::vector<char*> pointersTo(QList<QByteArray>& texts);

/// The error of a program that exists and can't be run, by the host's number.
Error notRun(int number, const QString& program);

} // namespace quoril
