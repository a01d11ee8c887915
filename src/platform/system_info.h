#pragma once

#include "formats/error.h"

#include <QString>

namespace quoril {

/// What the system tells about itself.
class SystemInfo
{
public:
    virtual ~SystemInfo() = default;

    /// The computer's name, as its registry gives it.
    virtual Result<QString> computerName() const = 0;

    /// The FileVersion string in the version block of the executable at the host path, by the block's first
    /// translation; an error if the file has no such block.
    virtual Result<QString> fileVersion(const QString& hostPath) const = 0;

    /// The system's text of an error number, its line end (CR LF) included; empty if it has none.
    virtual QString errorText(quint32 number) const = 0;
};

} // namespace quoril
