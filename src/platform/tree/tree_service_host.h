#pragma once

#include "formats/error.h"

#include <QString>
#include <QStringView>

namespace quoril {

class TreeMachine;

/// The name of the program that runs and watches one service process, looked for beside the running program.
inline constexpr QStringView ServiceHostProgram = u"quoril-service-host";

/// Has a host start the service and waits until the process exists: 2 if there is no host program, the error
/// of a program that can't be run, 33 with the file's name if the lock of the service's host is taken, by
/// whomever: the service counts as stopped then.
Status launchServiceHost(TreeMachine& machine, QStringView service);

/// What the host program does: detaches itself, starts the service's process, answers to the descriptor
/// `answer`, follows the process to its end and records it. Gives the exit status of the host.
int runServiceHost(const QString& treeRoot, const QString& service, int answer);

} // namespace quoril
