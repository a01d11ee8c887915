#pragma once

#include <QByteArray>

#include <optional>

namespace quoril {

/// What distinguishes a process of the host from every other one, also from one that gets its number later:
/// the number, the time of its start, the run of the host, and the program that it runs.
struct ProcessIdentity
{
    int pid = 0;
    quint64 startTicks = 0; // since the host's start
    QByteArray boot; // the kernel's name for its run
    QByteArray image; // the program's path; empty where it is not known yet

    /// The process as it is now; none on a host that runs no services of a tree, and if there is no such
    /// process or it has ended without being waited for.
    static std::optional<ProcessIdentity> of(int pid);

    bool isAlive() const;

    /// Sends the signal to this very process. False, and nothing is sent, if it is not alive.
    bool signal(int number) const;

    friend bool operator==(const ProcessIdentity&, const ProcessIdentity&) = default;
};

} // namespace quoril
