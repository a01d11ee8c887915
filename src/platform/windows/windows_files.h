#pragma once

#include "platform/files.h"

namespace quoril {

/// Files of the system that the program runs on. Paths may be longer than 260 units.
class WindowsFiles : public Files
{
public:
    Result<std::unique_ptr<QIODevice>> openForReading(QStringView path) override;
    Result<std::unique_ptr<QIODevice>> openForWriting(QStringView path) override;
    Status remove(QStringView path) override;
    Result<QStringList> find(QStringView pattern) override;
    Result<QString> fileVersion(QStringView path) override;
    Status setCurrentDirectory(QStringView path) override;
    Result<QString> hostPath(QStringView path) const override;
    Result<QString> machinePath(const QString& hostPath) const override;
};

} // namespace quoril
