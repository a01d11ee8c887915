#pragma once

#include "platform/registry.h"

#include <QString>

#include <functional>
#include <optional>

namespace quoril {

/// The `Group` value that makes a service an emulator instance, and the name of the value below `Parameters`
/// that names its emulation type.
inline constexpr QStringView EmulatorGroup = u"TargetPlatformEmulator";

/// The rights that every key is opened with: full access, and the 64-bit view for a 32-bit process on a
/// 64-bit system. Worked out anew at each call.
quint32 registryAccess();

/// The sizes of a caller's buffers.
struct InstanceLimits
{
    qsizetype nameUnits = 255; ///< longest key name; a longer one ends the walk
    qsizetype groupBytes = 1023; ///< longest `Group`; a service with a longer one is passed over
};

/// One instance on the walk. The keys are open during the visit only.
struct InstanceVisit
{
    const QString& name; ///< key name as it is stored
    const RegistryKey& key;
    const RegistryKey& services; ///< the key above, for opening instances by name
};

enum class Walk
{
    Continue,
    Stop
};

using InstanceVisitor = std::function<Walk(const InstanceVisit&)>;

/// The key of all services. No other key stays open.
Result<RegistryKeyHandle> openServices();

/// Visits each service whose `Group` is exactly EmulatorGroup, in stored order, until the visitor stops or
/// the enumeration fails, which counts as its end. Services that can't be opened are passed over.
void walkInstances(const RegistryKey& services, InstanceLimits limits, const InstanceVisitor& visit);

/// The same below the services key of the machine. Fails only if SYSTEM, CurrentControlSet or Services can't
/// be opened. No key stays open.
Status walkInstances(InstanceLimits limits, const InstanceVisitor& visit);

/// The key `Parameters` of an instance, with the emulation type that makes it complete.
struct InstanceParameters
{
    RegistryKeyHandle key;
    QString emulationType;
};

/// Nothing if `Parameters` can't be opened or its value EmulatorGroup can't be read into so many bytes.
std::optional<InstanceParameters> openParameters(const RegistryKey& instance, qsizetype limitBytes);

} // namespace quoril
