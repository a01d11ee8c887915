#pragma once

#include "formats/error.h"
#include "platform/services.h"

#include <QString>
#include <QStringView>

namespace quoril {

class TreeMachine;

/// The state in force of a service of a tree, be it a process or a driver of the system.
ServiceStatus serviceStatus(TreeMachine& machine, QStringView service);

/// Starts a service once everything that it depends on is up: what is not running is started first, each
/// after what it needs itself, and waited for. Of a group one member has to be up.
///
/// Before anything is started: 1056, 1058 and 1072 of the service, 1059 for a circle, 1075 where it depends
/// on a service that doesn't exist or is marked for deletion, 1068 where something further down does or is
/// disabled. 1068 too where a dependency doesn't come up; then 2, 3, 5, 193 of the service's own program.
Status startWithDependencies(TreeMachine& machine, const QString& service);

} // namespace quoril
