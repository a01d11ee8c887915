#pragma once

#include "platform/files.h"

namespace quoril {

class TreePaths;

/// Files of the tree under the machine's paths.
class TreeFiles : public Files
{
public:
    /// The paths are not owned and live as long as this object.
    explicit TreeFiles(TreePaths& paths) : m_paths(paths) { }

    Result<std::unique_ptr<QIODevice>> openForReading(QStringView path) override;
    Result<std::unique_ptr<QIODevice>> openForWriting(QStringView path) override;
    Status remove(QStringView path) override;
    Result<QStringList> find(QStringView pattern) override;
    Result<QString> fileVersion(QStringView path) override;
    Status setCurrentDirectory(QStringView path) override;
    Result<QString> hostPath(QStringView path) const override;
    Result<QString> machinePath(const QString& hostPath) const override;

private:
    TreePaths& m_paths;
};

} // namespace quoril
