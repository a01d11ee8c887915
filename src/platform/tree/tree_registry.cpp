#include "platform/tree/tree_registry.h"

#include "platform/tree/hardware_hive.h"
#include "platform/tree/hive_file.h"
#include "platform/tree/hive_key.h"
#include "platform/tree/tree_paths.h"

#include <mutex>

namespace quoril {

using namespace Qt::StringLiterals;

RegistryTransaction::RegistryTransaction(std::shared_ptr<HiveFile> hive) : m_hive(std::move(hive)) { }

RegistryTransaction::~RegistryTransaction()
{
    if (!m_isOpen)
        return;
    m_hive->rollBack();
    m_hive->mutex().unlock();
}

Status RegistryTransaction::commit()
{
    if (!m_isOpen)
        return Error{error::InvalidHandle, {}};
    m_isOpen = false;
    Status status = m_hive->commit();
    m_hive->mutex().unlock();
    return status;
}

struct TreeRegistry::Hives
{
    explicit Hives(const TreePaths& paths)
        : software(std::make_shared<HiveFile>(paths, u"SOFTWARE"_s))
        , system(std::make_shared<HiveFile>(paths, u"SYSTEM"_s))
    {
    }

    /// The hive mounted under the name; one without a store where there is none. HARDWARE is made when it is
    /// first asked for.
    MountedHive mounted(QStringView name)
    {
        if (foldedEquals(name, u"SYSTEM"))
            return {u"SYSTEM"_s, system};
        if (foldedEquals(name, u"SOFTWARE"))
            return {u"SOFTWARE"_s, software};
        if (!foldedEquals(name, u"HARDWARE"))
            return {};
        const std::lock_guard locker(mutex);
        if (!hardware)
            hardware = std::make_shared<VolatileHive>(makeHardwareHive(hostCpuInfo()));
        return {u"HARDWARE"_s, hardware};
    }

    std::mutex mutex;
    std::shared_ptr<HiveStore> hardware; // guarded by mutex
    std::shared_ptr<HiveFile> software;
    std::shared_ptr<HiveFile> system;
};

/// HKEY_LOCAL_MACHINE: nothing but the hives.
class TreeRegistry::RootKey : public RegistryKey
{
public:
    explicit RootKey(std::shared_ptr<Hives> hives) : m_hives(std::move(hives)) { }

    Result<RegistryKeyHandle> open(QStringView name, quint32 access) const override
    {
        const MountedHive hive = m_hives->mounted(name);
        if (!hive.store)
            return Error{error::FileNotFound, {}};
        if (Status status = hive.store->refresh(); !status)
            return status.failure();
        return RegistryKeyHandle(std::make_unique<HiveKey>(hive, QString(), access));
    }

    Result<RegistryKeyHandle> create(QStringView name, quint32 access) override
    {
        Result<RegistryKeyHandle> existing = open(name, access);
        if (existing || existing.errorNumber() != error::FileNotFound || m_hives->mounted(name).store)
            return existing;
        return Error{error::InvalidParameter, {}};
    }

    Result<QString> subkeyName(quint32 index, qsizetype roomUnits) const override
    {
        for (const QStringView name : {u"HARDWARE", u"SOFTWARE", u"SYSTEM"}) {
            if (!m_hives->mounted(name).store->refresh() || index-- != 0)
                continue;
            if (name.size() > roomUnits)
                return Error{error::MoreData, {}};
            return name.toString();
        }
        return Error{error::NoMoreItems, {}};
    }

    Status removeTree(QStringView) override { return Error{error::AccessDenied, {}}; }
    Result<QString> valueName(quint32) const override { return Error{error::NoMoreItems, {}}; }
    Result<RegistryValue> value(QStringView, qsizetype) const override
    {
        return Error{error::FileNotFound, {}};
    }
    Status setValue(QStringView, const RegistryValue&) override { return Error{error::AccessDenied, {}}; }
    Status removeValue(QStringView) override { return Error{error::FileNotFound, {}}; }

private:
    std::shared_ptr<Hives> m_hives;
};

TreeRegistry::TreeRegistry(const TreePaths& paths) : m_hives(std::make_shared<Hives>(paths)) { }

TreeRegistry::~TreeRegistry() = default;

Result<RegistryKeyHandle> TreeRegistry::localMachine()
{
    return RegistryKeyHandle(std::make_unique<RootKey>(m_hives));
}

RegistryKeyHandle TreeRegistry::system()
{
    return std::make_unique<HiveKey>(m_hives->mounted(u"SYSTEM"), QString(), key_access::Read);
}

Result<std::unique_ptr<RegistryTransaction>> TreeRegistry::beginTransaction(QStringView hiveName)
{
    const bool isSystem = foldedEquals(hiveName, u"SYSTEM");
    if (!isSystem && !foldedEquals(hiveName, u"SOFTWARE"))
        return Error{error::InvalidParameter, {}};
    const std::shared_ptr<HiveFile>& hive = isSystem ? m_hives->system : m_hives->software;
    hive->mutex().lock();
    if (Status status = hive->begin(); !status) {
        hive->mutex().unlock();
        return status.failure();
    }
    return std::make_unique<RegistryTransaction>(hive);
}

} // namespace quoril
