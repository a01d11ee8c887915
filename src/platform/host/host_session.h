#pragma once

#include "formats/error.h"

#include <QString>
#include <QStringView>

#include <memory>
#include <stop_token>

namespace quoril {

class Session;

/// Locks the person's screen. It may take seconds, fewer where it is to stop.
using WorkstationLock = Status (*)(const std::stop_token& stop);

/// The session of the person on the host, whose machine is the tree in that folder. What is broadcast there
/// stays among the programs that work on the same tree. A host that needs a lock for the workstation, and has
/// none, never locks it.
std::unique_ptr<Session> openHostSession(const QString& treeFolder, WorkstationLock lock);

/// The name by which a message of a tree's programs is registered on the host.
QString treeMessage(QStringView message, const QString& treeFolder);

} // namespace quoril
