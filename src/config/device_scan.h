#pragma once

namespace quoril {

class RegistryKey;
class ServiceInfo;

/// Appends to `m_devices` a record for each component below the instance's open key `Parameters` that has a
/// readable `Class` and at least one unit, in stored order. The components of the fixed tables are left out.
/// What can't be read is passed over in silence.
void ScanDevices(const RegistryKey& parameters, ServiceInfo& service);

/// Fills the fixed tables `pka`, `pkb`, `dua`, `dub`, `pua` and `pub` from the components of those names. A
/// device is there if its key has a readable `Class`. A SCSI device holds its first eight units in order of
/// their index, the others hold the units of index 0 to 7 in their slots.
void fillFixedDevices(const RegistryKey& parameters, ServiceInfo& service);

} // namespace quoril
