#pragma once

#include "platform/system_info.h"

namespace quoril {

class Registry;

/// What the tree's registry says about its system, and the English texts of error numbers.
class TreeSystemInfo : public SystemInfo
{
public:
    /// The registry is not owned and lives as long as this object.
    explicit TreeSystemInfo(Registry& registry) : m_registry(registry) { }

    Result<QString> computerName() const override;
    /// As the registry's files have it.
    Result<SystemVersion> version() const override;
    /// As the registry's files have them, else those of the host.
    ProcessorInfo processors() const override;
    /// The host's.
    Result<quint64> physicalMemory() const override;
    QString windowsDirectory() const override;
    /// The program that runs has the version that its build gave it; an executable of the host has no version
    /// block.
    Result<QString> programVersion(const QString& hostPath) const override;
    QString errorText(quint32 number) const override;

private:
    Registry& m_registry;
};

} // namespace quoril
