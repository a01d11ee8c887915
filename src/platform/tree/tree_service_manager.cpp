#include "platform/tree/tree_service_manager.h"

#include "platform/host/file_lock.h"
#include "platform/host/host_file.h"
#include "platform/host/host_system.h"
#include "platform/tree/tree_machine.h"
#include "platform/tree/tree_service.h"

#include <QDeadlineTimer>

#include <array>
#include <chrono>
#include <thread>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr quint32 AllServiceRights = 0xF01FF;
constexpr quint32 AllManagerRights = 0xF003F;
constexpr qsizetype LockStatusFixedBytes = 24;

/// The rights that generic ones stand for: read, write, execute and all, from the uppermost bit down in the
/// order read 0x80000000, write, execute, all.
quint32 specificRights(quint32 access, const std::array<quint32, 4>& meaning)
{
    quint32 rights = access & 0x0FFFFFFF;
    for (std::size_t i = 0; i < meaning.size(); ++i)
        if (access & (0x80000000U >> i))
            rights |= meaning[i];
    return rights;
}

HostPlace lockFile(const HostFolder& parent)
{
    return {parent, u".database"_s};
}

class TreeDatabaseLock : public ServiceDatabaseLock
{
public:
    explicit TreeDatabaseLock(TryLock lock) : m_lock(std::move(lock)) { }
    ~TreeDatabaseLock() override { (void)m_lock.write({}).ok(); }

private:
    TryLock m_lock;
};

struct LockHolder
{
    QString name;
    qint64 since; // seconds since 1970
};

/// Who holds the lock. Whoever takes it or lets it go has no name in it for a moment, which is waited for.
std::optional<LockHolder> lockHolder(const HostPlace& place, qint64 now)
{
    using namespace std::chrono_literals;
    const QDeadlineTimer until(1s);
    while (TryLock::isTaken(place)) {
        const auto file = openRegularFile(place, HostOpen::Read);
        const QList<QByteArray> lines = file ? (*file)->read(1024).split('\n') : QList<QByteArray>();
        if (lines.size() == 3)
            return LockHolder{QString::fromUtf8(lines[1]), lines[0].toLongLong()};
        if (until.hasExpired())
            return LockHolder{{}, now};
        std::this_thread::sleep_for(1ms);
    }
    return std::nullopt;
}

/// Removes a service that was marked while it ran or was open, when nobody is left who would do it.
void removeIfForgotten(TreeMachine& machine, QStringView name)
{
    TreeServiceDatabase database(machine);
    if (!database.isMarkedForDelete(name))
        return;
    const Result<HostFolder> parent = ServiceFolder::makeParent(machine.paths());
    if (!parent)
        return;
    const auto lock = ServiceFolder::lockServices(*parent);
    const ServiceFolder folder(machine.paths(), name);
    if (!lock)
        return;
    if (folder.exists()) {
        const TryLock deleting(folder.place(u"delete"));
        if (folder.current().status.currentState != service_state::Stopped || !deleting.isHeld())
            return;
    }
    database.removeIfMarked(name, folder);
}

class TreeServiceControl : public ServiceControl
{
public:
    explicit TreeServiceControl(TreeMachine& machine) : m_machine(machine) { }

    Result<std::unique_ptr<ServiceManager>> openManager(quint32 access) override
    {
        constexpr std::array<quint32, 4> generic = {0x20014, 0x20022, 0x20009, AllManagerRights};
        return std::unique_ptr<ServiceManager>(
            std::make_unique<TreeServiceManager>(m_machine, specificRights(access, generic)));
    }

private:
    TreeMachine& m_machine;
};

} // namespace

Result<std::unique_ptr<Service>> TreeServiceManager::openService(QStringView name, quint32 access)
{
    const TreeServiceDatabase database(m_machine);
    const Result<bool> isMarked = database.deleteMark(name);
    if (!isMarked)
        return isMarked.failure();
    if (*isMarked) {
        removeIfForgotten(m_machine, name);
        if (Status known = database.check(name); !known)
            return known.failure();
    }
    constexpr std::array<quint32, 4> generic = {0x2008D, 0x20002, 0x20170, AllServiceRights};
    return std::unique_ptr<Service>(
        std::make_unique<TreeService>(m_machine, name.toString(), specificRights(access, generic)));
}

Status TreeServiceManager::createService(const NewService& service)
{
    if (!(m_rights & service_access::ManagerCreateService))
        return Error{error::AccessDenied, service.name};
    removeIfForgotten(m_machine, service.name);
    return TreeServiceDatabase(m_machine).create(service);
}

Result<std::unique_ptr<ServiceDatabaseLock>> TreeServiceManager::lockDatabase()
{
    if (!(m_rights & service_access::ManagerLock))
        return Error{error::AccessDenied, {}};
    const Result<HostFolder> parent = ServiceFolder::makeParent(m_machine.paths());
    if (!parent)
        return parent.failure();
    TryLock lock(lockFile(*parent));
    if (lock.state().errorNumber() == error::LockViolation)
        return Error{error::ServiceDatabaseLocked, {}};
    if (!lock.isHeld())
        return lock.state().failure();
    const QByteArray holder
        = QByteArray::number(m_machine.clock().now()) + '\n' + hostUserName().toUtf8() + '\n';
    if (Status written = lock.write(holder); !written)
        return written.failure();
    return std::unique_ptr<ServiceDatabaseLock>(std::make_unique<TreeDatabaseLock>(std::move(lock)));
}

Result<ServiceLockStatus> TreeServiceManager::queryLockStatus(const QueryBlock& block)
{
    if (!(m_rights & service_access::ManagerQueryLockStatus))
        return Error{error::AccessDenied, {}};
    ServiceLockStatus status;
    const Result<HostFolder> parent = ServiceFolder::parent(m_machine.paths());
    const qint64 now = m_machine.clock().now();
    if (const auto holder = parent ? lockHolder(lockFile(*parent), now) : std::nullopt) {
        status.isLocked = true;
        status.owner = holder->name;
        status.secondsHeld = static_cast<quint32>(qMax<qint64>(0, now - holder->since));
    }
    if (qsizetype(block.size()) < LockStatusFixedBytes + 2 * (status.owner.size() + 1))
        return Error{error::InsufficientBuffer, {}};
    return status;
}

std::unique_ptr<ServiceControl> makeTreeServiceControl(TreeMachine& machine)
{
    return std::make_unique<TreeServiceControl>(machine);
}

} // namespace quoril
