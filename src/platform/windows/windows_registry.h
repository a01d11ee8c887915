#pragma once

#include "platform/registry.h"

namespace quoril {

/// HKEY_LOCAL_MACHINE of the system that the program runs on.
class WindowsRegistry : public Registry
{
public:
    Result<RegistryKeyHandle> localMachine() override;
    bool isWow64Process() const override;
};

} // namespace quoril
