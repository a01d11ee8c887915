#pragma once

#include "formats/error.h"

#include <QString>
#include <QStringView>

#include <memory>

namespace quoril {

/// The exit code of a process that has not ended yet.
inline constexpr quint32 StillActive = 259;

/// A process that was created here. Destroying the object closes the handle and leaves the process running.
class Process
{
public:
    virtual ~Process() = default;

    /// Waits for the end of the process, at most so long. True if it has ended.
    virtual bool wait(quint32 milliseconds) = 0;

    /// The exit code, StillActive while the process runs.
    virtual Result<quint32> exitCode() = 0;

    virtual Status terminate(quint32 exitCode) = 0;
};

/// Processes of the machine.
class Processes
{
public:
    virtual ~Processes() = default;

    /// Creates a process from a command line in the machine's form (the program's machine path, in double
    /// quotes where it has blanks, then its arguments), with the caller's environment and current folder and
    /// no inherited handles. With an application name that names the program instead. A bare name is one of
    /// the system's own folders (System32, System, Windows); nothing is looked for in the current one. 2 or 3
    /// no such file, 2 for a bare name, 5, 193.
    virtual Result<std::unique_ptr<Process>> create(QStringView applicationName, QStringView commandLine) = 0;

    /// Whether the program at the machine path could be run, as far as that can be seen without running it;
    /// the errors of create().
    virtual Status canRun(QStringView program) const = 0;
};

} // namespace quoril
