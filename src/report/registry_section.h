#pragma once

#include "platform/registry.h"

#include <QString>
#include <QStringView>

namespace quoril {

class ReportStream;

/// A registry value as the report prints it.
struct PrintedValue
{
    QString ValType;
    QString ValFormatted;
};

PrintedValue printedValue(const RegistryValue& value);

/// Writes the entries of the key of that name below the parent and of all keys below it, depth first in
/// stored order. A key that can't be opened leaves no trace, and a value that can't be read or has more than
/// 511 bytes ends the values of its key. A tree deeper than any registry's own, which only links can make,
/// is followed no further than that.
void WriteRegistryKey(const RegistryKey& parent, QStringView name, ReportStream& out);

/// Writes the entries of the instance of exactly that name (case counts) below the services key.
void writeInstanceKeys(const RegistryKey& services, const QString& serviceName, ReportStream& out);

} // namespace quoril
