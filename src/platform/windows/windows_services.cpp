#include "platform/windows/windows_services.h"

#include "platform/windows/win32.h"

#include <algorithm>

namespace quoril {

namespace {

using ServiceHandle = OwnedHandle<SC_HANDLE, ::CloseServiceHandle>;

static_assert(ServiceNoChange == SERVICE_NO_CHANGE);

QStringList textsOf(const wchar_t* multiString)
{
    QStringList texts;
    while (multiString && *multiString) {
        texts.append(textOf(multiString));
        multiString += texts.last().size() + 1;
    }
    return texts;
}

/// The texts one after the other, each with its zero unit, and one more at the end.
QString multiStringOf(const QStringList& texts)
{
    QString units;
    for (const QString& text : texts)
        units += text + QChar(u'\0');
    return units + QChar(u'\0');
}

ServiceStatus statusOfService(const SERVICE_STATUS& status)
{
    return {status.dwCurrentState, status.dwWin32ExitCode, status.dwCheckPoint, status.dwWaitHint};
}

class WindowsService : public Service
{
public:
    explicit WindowsService(ServiceHandle handle) : m_handle(std::move(handle)) { }

    Result<ServiceStatus> queryStatus() override
    {
        SERVICE_STATUS_PROCESS status = {};
        DWORD needed = 0;
        if (!::QueryServiceStatusEx(m_handle.get(), SC_STATUS_PROCESS_INFO, reinterpret_cast<BYTE*>(&status),
                sizeof status, &needed))
            return lastError();
        return ServiceStatus{status.dwCurrentState, status.dwWin32ExitCode, status.dwCheckPoint,
            status.dwWaitHint, status.dwProcessId};
    }

    Result<ServiceConfig> queryConfig(qsizetype limitBytes) override
    {
        const QueryBlock block(std::max(static_cast<std::size_t>(limitBytes), sizeof(QUERY_SERVICE_CONFIGW)));
        if (!block)
            return Error{error::NotEnoughMemory, {}};
        auto* const answer = static_cast<QUERY_SERVICE_CONFIGW*>(block.data());
        DWORD needed = 0;
        if (!::QueryServiceConfigW(m_handle.get(), answer, static_cast<DWORD>(limitBytes), &needed))
            return lastError();
        const QUERY_SERVICE_CONFIGW& config = *answer;
        return ServiceConfig{config.dwServiceType, config.dwStartType, config.dwErrorControl,
            textOf(config.lpBinaryPathName), textOf(config.lpLoadOrderGroup), textsOf(config.lpDependencies),
            textOf(config.lpDisplayName)};
    }

    Status start() override { return statusOfCall(::StartServiceW(m_handle.get(), 0, nullptr)); }

    Result<ServiceStatus> control(quint32 code) override
    {
        SERVICE_STATUS status = {};
        if (!::ControlService(m_handle.get(), code, &status))
            return lastError();
        return statusOfService(status);
    }

    Status changeConfig(const ServiceConfigChange& change) override
    {
        const QString dependencies = change.dependencies ? multiStringOf(*change.dependencies) : QString();
        return statusOfCall(::ChangeServiceConfigW(m_handle.get(), change.serviceType, change.startType,
            change.errorControl, change.binaryPath ? wide(*change.binaryPath) : nullptr, nullptr, nullptr,
            change.dependencies ? wide(dependencies) : nullptr, nullptr, nullptr,
            change.displayName ? wide(*change.displayName) : nullptr));
    }

    Status markForDelete() override { return statusOfCall(::DeleteService(m_handle.get())); }

private:
    ServiceHandle m_handle;
};

class WindowsDatabaseLock : public ServiceDatabaseLock
{
public:
    explicit WindowsDatabaseLock(SC_LOCK lock) : m_lock(lock) { }

private:
    OwnedHandle<SC_LOCK, ::UnlockServiceDatabase> m_lock;
};

class WindowsServiceManager : public ServiceManager
{
public:
    explicit WindowsServiceManager(ServiceHandle handle) : m_handle(std::move(handle)) { }

    Result<std::unique_ptr<Service>> openService(QStringView name, quint32 access) override
    {
        if (hasZeroUnit(name))
            return Error{error::InvalidName, {}};
        ServiceHandle service(::OpenServiceW(m_handle.get(), wide(name.toString()), access));
        if (!service)
            return lastError();
        return std::unique_ptr<Service>(std::make_unique<WindowsService>(std::move(service)));
    }

    Status createService(const NewService& service) override
    {
        if (hasZeroUnit(service.name))
            return Error{error::InvalidName, service.name};
        const QString dependencies = multiStringOf(service.dependencies);
        const ServiceHandle made(
            ::CreateServiceW(m_handle.get(), wide(service.name), wideOrNull(service.displayName),
                SERVICE_QUERY_STATUS, SERVICE_WIN32_OWN_PROCESS, service.startType, SERVICE_ERROR_NORMAL,
                wide(service.binaryPath), wideOrNull(service.loadOrderGroup), nullptr,
                service.dependencies.isEmpty() ? nullptr : wide(dependencies), nullptr, nullptr));
        return statusOfCall(made != nullptr);
    }

    Result<std::unique_ptr<ServiceDatabaseLock>> lockDatabase() override
    {
        const SC_LOCK lock = ::LockServiceDatabase(m_handle.get());
        if (!lock)
            return lastError();
        return std::unique_ptr<ServiceDatabaseLock>(std::make_unique<WindowsDatabaseLock>(lock));
    }

    Result<ServiceLockStatus> queryLockStatus(const QueryBlock& block) override
    {
        auto* const answer = static_cast<QUERY_SERVICE_LOCK_STATUSW*>(block.data());
        DWORD needed = 0;
        // Not every system sets an error when it refuses.
        ::SetLastError(ERROR_SUCCESS);
        if (!::QueryServiceLockStatusW(m_handle.get(), answer, static_cast<DWORD>(block.size()), &needed))
            return lastError();
        const QUERY_SERVICE_LOCK_STATUSW& status = *answer;
        return ServiceLockStatus{status.fIsLocked != 0, textOf(status.lpLockOwner), status.dwLockDuration};
    }

private:
    ServiceHandle m_handle;
};

} // namespace

Result<std::unique_ptr<ServiceManager>> WindowsServiceControl::openManager(quint32 access)
{
    ServiceHandle manager(::OpenSCManagerW(nullptr, nullptr, access));
    if (!manager)
        return lastError();
    return std::unique_ptr<ServiceManager>(std::make_unique<WindowsServiceManager>(std::move(manager)));
}

} // namespace quoril
