#pragma once

#include "platform/processes.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringView>

#include <memory>

namespace quoril {

/// What names of programs end in on the host.
#ifdef Q_OS_WIN
inline constexpr QStringView HostProgramSuffix = u".exe";
#else
inline constexpr QStringView HostProgramSuffix = u"";
#endif

/// What a program of the host is started with.
struct HostCommand
{
    QString program;
    QList<QByteArray> arguments; // the program's name first
    QList<QByteArray> environment; // "NAME=value"
    QString folder;
    int output = -1; // a descriptor for its standard output, which else leads nowhere
    bool asksForExitCode = false; // it may pass on a code of 32 bits, as exit_code.h describes
};

/// Starts a program of a tree. 193 for a file that the host can't run, 50 on a host that runs no program of a
/// tree, else the host's reason.
Result<std::unique_ptr<Process>> startHostProgram(const HostCommand& command);

/// Whether startHostProgram() could start the file, with its errors.
Status canRunHostProgram(const QString& hostPath);

/// Whether the host's system runs the file itself: others it may hand to a helper, programs of another system
/// above all.
bool isHostProgram(const QString& hostPath);

} // namespace quoril
