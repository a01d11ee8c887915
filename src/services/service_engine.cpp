#include "services/service_engine.h"

#include "platform/machine.h"

namespace quoril {

namespace {

// The size of the platform's lock status with the longest name of an owner.
constexpr std::size_t LockStatusBytes = 268;

/// The lock, or null where it isn't needed. The outcome is Done unless the operation has to end here.
ServiceOutcome takeLock(
    ServiceManager& manager, DatabaseLocking locking, std::unique_ptr<ServiceDatabaseLock>& lock)
{
    if (locking == DatabaseLocking::None)
        return {};
    auto taken = manager.lockDatabase();
    if (taken) {
        lock = *std::move(taken);
        return {};
    }
    if (taken.errorNumber() != error::ServiceDatabaseLocked)
        return {ServiceStep::LockDatabase, taken.errorNumber()};
    if (locking == DatabaseLocking::IfFree)
        return {};
    const QueryBlock block = manager.allocate(LockStatusBytes);
    if (!block)
        return {ServiceStep::NoMemory, error::NotEnoughMemory};
    // Who it is changes nothing.
    (void)manager.queryLockStatus(block).ok();
    return {ServiceStep::LockHeld, error::ServiceDatabaseLocked};
}

} // namespace

ServiceOutcome operateService(const ServiceAccess& access, const std::function<Status(Service&)>& act)
{
    // Declared in the order of opening, so that leaving by any road closes in the order that is promised.
    std::unique_ptr<ServiceManager> manager;
    std::unique_ptr<Service> service;
    std::unique_ptr<ServiceDatabaseLock> lock;

    auto connected = machine().services().openManager(service_access::ManagerGenericAll);
    if (!connected)
        return {ServiceStep::OpenManager, connected.errorNumber()};
    manager = *std::move(connected);

    if (const auto outcome = takeLock(*manager, access.locking, lock); outcome.step != ServiceStep::Done)
        return outcome;

    auto opened = manager->openService(access.name, access.rights);
    if (!opened)
        return {ServiceStep::OpenService, opened.errorNumber()};
    service = *std::move(opened);
    if (access.manager == ManagerUse::CloseAtOnce && access.locking == DatabaseLocking::None)
        manager.reset();

    const Status acted = act(*service);
    return acted ? ServiceOutcome() : ServiceOutcome{ServiceStep::Act, acted.errorNumber()};
}

} // namespace quoril
