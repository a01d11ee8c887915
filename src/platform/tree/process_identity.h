#pragma once

#include <QByteArray>

#include <optional>
#include <sys/types.h>

namespace quoril {

/// What tells a process of the host from every other one, also from one that gets its number later: the
/// number, the time of its start, the run of the host, and the program that it runs.
struct ProcessIdentity
{
    pid_t pid = 0;
    quint64 startTicks = 0; // since the host's start
    QByteArray boot; // the kernel's name for its run
    QByteArray image; // the program's path

    /// The process as it is now; none if there is no such process or it has ended without being waited for.
    static std::optional<ProcessIdentity> of(pid_t pid);

    bool isAlive() const;

    /// Sends the signal to this very process. False, and nothing is sent, if it is not alive.
    bool signal(int number) const;

    friend bool operator==(const ProcessIdentity&, const ProcessIdentity&) = default;
};

} // namespace quoril
