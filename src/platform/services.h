#pragma once

#include "formats/error.h"

#include <QString>
#include <QStringList>
#include <QStringView>

#include <cstdlib>
#include <memory>
#include <optional>

namespace quoril {

/// Access rights of the service manager and of services, with the platform's values.
namespace service_access {
inline constexpr quint32 ManagerConnect = 0x0001;
inline constexpr quint32 ManagerCreateService = 0x0002;
inline constexpr quint32 ManagerLock = 0x0008;
inline constexpr quint32 ManagerQueryLockStatus = 0x0010;
inline constexpr quint32 QueryConfig = 0x0001;
inline constexpr quint32 ChangeConfig = 0x0002;
inline constexpr quint32 QueryStatus = 0x0004;
inline constexpr quint32 Start = 0x0010;
inline constexpr quint32 Stop = 0x0020;
inline constexpr quint32 Delete = 0x10000;
/// Generic read, write and execute of the manager.
inline constexpr quint32 ManagerGenericAll = 0xE0000000;
} // namespace service_access

namespace service_state {
inline constexpr quint32 Stopped = 1;
inline constexpr quint32 StartPending = 2;
inline constexpr quint32 StopPending = 3;
inline constexpr quint32 Running = 4;
inline constexpr quint32 ContinuePending = 5;
inline constexpr quint32 PausePending = 6;
inline constexpr quint32 Paused = 7;
} // namespace service_state

namespace start_type {
inline constexpr quint32 Boot = 0;
inline constexpr quint32 System = 1;
inline constexpr quint32 Automatic = 2;
inline constexpr quint32 Manual = 3;
inline constexpr quint32 Disabled = 4;
} // namespace start_type

inline constexpr quint32 ServiceControlStop = 1;
inline constexpr quint32 ServiceNoChange = 0xFFFFFFFF;

struct ServiceStatus
{
    quint32 currentState = service_state::Stopped;
    quint32 win32ExitCode = 0;
    quint32 checkPoint = 0;
    quint32 waitHintMilliseconds = 0;
    quint32 processId = 0; // of the service's process, 0 where there is none
};

struct ServiceConfig
{
    quint32 serviceType = 0;
    quint32 startType = 0;
    quint32 errorControl = 0;
    QString binaryPath;
    QString loadOrderGroup;
    QStringList dependencies;
    QString displayName;
};

/// What is to change of a service's configuration; a field left as it is here changes nothing.
struct ServiceConfigChange
{
    quint32 serviceType = ServiceNoChange;
    quint32 startType = ServiceNoChange;
    quint32 errorControl = ServiceNoChange;
    std::optional<QString> binaryPath;
    std::optional<QStringList> dependencies;
    std::optional<QString> displayName;
};

/// A service that is to be registered: a program in a process of its own.
struct NewService
{
    QString name;
    QString displayName; // the name where it is empty
    QString binaryPath;
    QString loadOrderGroup;
    quint32 startType = start_type::Manual;
    QStringList dependencies;
};

/// An open service. It closes itself. An operation without its right ends with error 5.
class Service
{
public:
    virtual ~Service() = default;

    virtual Result<ServiceStatus> queryStatus() = 0;
    /// The configuration, as far as it fits into so many bytes; 122 if it doesn't.
    virtual Result<ServiceConfig> queryConfig(qsizetype limitBytes) = 0;
    /// Asks the manager to start the service. It starts first what the service depends on and waits for that,
    /// but not for the service itself: 1056, 1058, 1059 a circle, 1068 a dependency doesn't start, 1072,
    /// 1075 there is no such dependency, 2, 3, 5, 193.
    virtual Status start() = 0;
    /// Sends a control code and gives the status that followed: 1062 not running, 1061, 1052 (a driver of the
    /// system too), and 1051 while
    /// a service that needs this one is not stopped.
    virtual Result<ServiceStatus> control(quint32 code) = 0;
    /// 1059 if the service would then depend on itself, 1072.
    virtual Status changeConfig(const ServiceConfigChange& change) = 0;
    /// Marks the service for deletion: it is gone once it is stopped and no handle is open. 1072 if it is
    /// marked.
    virtual Status markForDelete() = 0;
};

/// The lock of the service database. Destroying it unlocks.
class ServiceDatabaseLock
{
public:
    virtual ~ServiceDatabaseLock() = default;
};

struct ServiceLockStatus
{
    bool isLocked = false;
    QString owner;
    quint32 secondsHeld = 0;
};

/// Zeroed memory of the caller, which a query of the platform fills. Null where there is none to be had.
class QueryBlock
{
public:
    QueryBlock() = default;
    explicit QueryBlock(std::size_t bytes) : m_bytes(std::calloc(1, bytes)), m_size(m_bytes ? bytes : 0) { }

    explicit operator bool() const { return m_bytes != nullptr; }
    /// Aligned for every type.
    void* data() const { return m_bytes.get(); }
    std::size_t size() const { return m_size; }

private:
    struct Free
    {
        void operator()(void* memory) const { std::free(memory); }
    };

    std::unique_ptr<void, Free> m_bytes;
    std::size_t m_size = 0;
};

/// An open connection to the service manager. It closes itself; services opened through it stay open.
class ServiceManager
{
public:
    virtual ~ServiceManager() = default;

    /// 1060 no such service, 5 no right, 123 no valid name.
    virtual Result<std::unique_ptr<Service>> openService(QStringView name, quint32 access) = 0;
    /// Registers a service. 1073 if there is one of that name, 1072 if it is about to be deleted, 1059 if it
    /// would depend on itself, 5, 87, 123.
    virtual Status createService(const NewService& service) = 0;
    /// 1055 if somebody else holds the lock.
    virtual Result<std::unique_ptr<ServiceDatabaseLock>> lockDatabase() = 0;
    /// Memory for an answer.
    virtual QueryBlock allocate(std::size_t bytes) { return QueryBlock(bytes); }
    /// Who holds the lock; 122 where the block is too small for the answer.
    virtual Result<ServiceLockStatus> queryLockStatus(const QueryBlock& block) = 0;
};

/// The machine's service control manager.
class ServiceControl
{
public:
    virtual ~ServiceControl() = default;
    virtual Result<std::unique_ptr<ServiceManager>> openManager(quint32 access) = 0;
};

} // namespace quoril
