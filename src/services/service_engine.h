#pragma once

#include "platform/services.h"

#include <QString>

#include <functional>

namespace quoril {

/// Whether an operation takes the lock of the service database first.
enum class DatabaseLocking
{
    None,
    IfFree, ///< goes on without the lock while somebody else holds it
    Required
};

enum class ManagerUse
{
    CloseAtOnce, ///< closed as soon as the service is open
    KeepOpen ///< closed after the service
};

/// What an operation needs of the service manager.
struct ServiceAccess
{
    QString name;
    quint32 rights = 0; ///< of service_access, for the service
    DatabaseLocking locking = DatabaseLocking::None;
    ManagerUse manager = ManagerUse::CloseAtOnce; ///< with a lock the manager stays open in any case
};

enum class ServiceStep
{
    OpenManager,
    LockDatabase,
    LockHeld, ///< the lock is required, and somebody else holds it
    NoMemory, ///< the same, and there is no memory to ask who
    OpenService,
    Act,
    Done
};

/// How far an operation came: the step that failed and its error number, or Done and 0.
struct ServiceOutcome
{
    ServiceStep step = ServiceStep::Done;
    quint32 errorNumber = error::Success;
};

/// The one road of every operation on a service: connects to the manager, takes the lock where it is asked
/// for, opens the service with the given rights, acts, and gives lock, service and manager back, in this
/// order and whatever failed. Nothing is shown and nothing is tried twice.
ServiceOutcome operateService(const ServiceAccess& access, const std::function<Status(Service&)>& act);

} // namespace quoril
