#pragma once

#include "platform/system_info.h"

namespace quoril {

class RegistryKey;

/// The system's version as SOFTWARE\Microsoft\Windows NT\CurrentVersion and the control set have it, below
/// the key HKEY_LOCAL_MACHINE. An error if no version stands there; all else may be missing.
Result<SystemVersion> readSystemVersion(const RegistryKey& localMachine);

/// The processors as the control set's environment has them; what is missing there is the host's, or 0.
ProcessorInfo readProcessors(const RegistryKey& localMachine);

} // namespace quoril
