#pragma once

#include "platform/system_info.h"

namespace quoril {

/// What the system that the program runs on reports about itself.
class WindowsSystemInfo : public SystemInfo
{
public:
    Result<QString> computerName() const override;
    Result<SystemVersion> version() const override;
    ProcessorInfo processors() const override;
    Result<quint64> physicalMemory() const override;
    QString windowsDirectory() const override;
    Result<QString> programVersion(const QString& hostPath) const override;
    QString errorText(quint32 number) const override;
};

} // namespace quoril
