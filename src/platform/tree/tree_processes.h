#pragma once

#include "platform/processes.h"

#include <QStringList>

namespace quoril {

class TreePaths;

/// Runs programs of the host that lie in the tree, under the machine's paths. They get the tree's folder in
/// the environment variable QUORIL_MACHINE, the machine's current directory as theirs, and no open files but
/// the one for the exit code. What ends with the exit status 255 and gives no code there has ended with
/// 0xFFFFFFFF, since a status of the host has eight bits.
class TreeProcesses : public Processes
{
public:
    /// The paths are not owned and live as long as this object.
    explicit TreeProcesses(const TreePaths& paths) : m_paths(paths) { }

    Result<std::unique_ptr<Process>> create(QStringView applicationName, QStringView commandLine) override;
    Status canRun(QStringView program) const override;

    struct Program
    {
        QString hostPath;
        QStringList arguments;
    };

    /// The program of the host that a command line means, found as Windows finds it: ".exe" is added to a
    /// name without extension, and a name without folder is looked for in the current directory and then in
    /// the system's folders. A current directory that is given, "C:\\dir", counts in place of the process's
    /// own. 2, 3, 5, 123.
    Result<Program> findProgram(QStringView commandLine, QStringView currentDirectory = {}) const;

private:
    /// Host path of a program that is named by itself. What the system has and a tree may lack, or have as a
    /// program of another system, is the desktop's own.
    Result<QString> findApplication(QStringView name) const;

    const TreePaths& m_paths;
};

} // namespace quoril
