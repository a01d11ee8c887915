#include "services/service_walk.h"

#include "platform/machine.h"

namespace quoril {

quint32 registryAccess()
{
    return key_access::AllAccess | (machine().registry().isWow64Process() ? key_access::Wow64_64Key : 0);
}

Result<RegistryKeyHandle> openServices()
{
    const auto root = machine().registry().localMachine();
    if (!root)
        return root.failure();
    return openPath(**root, u"SYSTEM\\CurrentControlSet\\Services", registryAccess);
}

void walkInstances(const RegistryKey& services, InstanceLimits limits, const InstanceVisitor& visit)
{
    for (quint32 index = 0;; ++index) {
        const auto name = services.subkeyName(index, limits.nameUnits);
        if (!name)
            return;
        const auto key = services.open(*name, registryAccess());
        if (!key)
            continue;
        const auto group = (*key)->text(u"Group", limits.groupBytes);
        if (group && *group == EmulatorGroup && visit({*name, **key, services}) == Walk::Stop)
            return;
    }
}

Status walkInstances(InstanceLimits limits, const InstanceVisitor& visit)
{
    const auto services = openServices();
    if (!services)
        return services.failure();
    walkInstances(**services, limits, visit);
    return {};
}

std::optional<InstanceParameters> openParameters(const RegistryKey& instance, qsizetype limitBytes)
{
    auto key = instance.open(u"Parameters", registryAccess());
    if (!key)
        return std::nullopt;
    auto type = (*key)->text(EmulatorGroup, limitBytes);
    if (!type)
        return std::nullopt;
    return InstanceParameters{*std::move(key), *std::move(type)};
}

} // namespace quoril
