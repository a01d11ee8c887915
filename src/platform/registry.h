#pragma once

#include "formats/error.h"

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <functional>
#include <memory>

namespace quoril {

/// Access rights of registry keys, with the platform's values.
namespace key_access {
inline constexpr quint32 QueryValue = 0x0001;
inline constexpr quint32 SetValue = 0x0002;
inline constexpr quint32 CreateSubKey = 0x0004;
inline constexpr quint32 EnumerateSubKeys = 0x0008;
inline constexpr quint32 Delete = 0x10000;
inline constexpr quint32 Read = 0x20019;
inline constexpr quint32 AllAccess = 0xF003F;
inline constexpr quint32 Wow64_64Key = 0x0100;
} // namespace key_access

/// Types of registry values that the console knows by number. Others occur and are kept as they are.
namespace value_type {
inline constexpr quint32 None = 0;
inline constexpr quint32 String = 1;
inline constexpr quint32 ExpandString = 2;
inline constexpr quint32 Binary = 3;
inline constexpr quint32 DWord = 4;
inline constexpr quint32 MultiString = 7;
inline constexpr quint32 QWord = 11;
} // namespace value_type

/// One value as it is stored: text is UTF-16LE and as a rule ends in a zero unit.
struct RegistryValue
{
    quint32 type = value_type::None;
    QByteArray data;

    /// The data as text, whatever the type: its units up to the first zero unit.
    QString text() const;
};

class RegistryKey;
/// An open key. It closes itself.
using RegistryKeyHandle = std::unique_ptr<RegistryKey>;

/// An open registry key. Key and value names match without regard to case. Each operation needs the right
/// that the platform asks for it (QueryValue, SetValue, CreateSubKey, EnumerateSubKeys, and Delete for
/// removeTree); without it the result is error 5. A key that was removed meanwhile gives 1018. On a machine
/// that can't be written every change ends with error 19.
class RegistryKey
{
public:
    virtual ~RegistryKey() = default;

    /// Opens the subkey of that name (one level, no separators) with the given rights; 2 if there is none.
    virtual Result<RegistryKeyHandle> open(QStringView name, quint32 access) const = 0;

    /// Opens a path of subkeys, separated by backslashes, in one step: the rights are asked for at its end
    /// alone. As open().
    virtual Result<RegistryKeyHandle> openBelow(QStringView path, quint32 access) const;

    /// Opens the subkey, making it first when there is none.
    virtual Result<RegistryKeyHandle> create(QStringView name, quint32 access) = 0;

    /// Removes the subkey with all that is below it; 2 if there is none.
    virtual Status removeTree(QStringView name) = 0;

    /// The name of the subkey at the index, counted from 0 in stored order. roomUnits is the longest name
    /// that is taken, in UTF-16 units without the closing zero: 234 for a longer one, 259 after the last.
    virtual Result<QString> subkeyName(quint32 index, qsizetype roomUnits) const = 0;

    /// The name of the value at the index, counted from 0; 259 after the last.
    virtual Result<QString> valueName(quint32 index) const = 0;

    /// The value of that name, an empty name being the key's default value. limitBytes is the size of the
    /// caller's buffer: 234 for a value with more bytes; 2 if there is none.
    virtual Result<RegistryValue> value(QStringView name, qsizetype limitBytes) const = 0;

    virtual Status setValue(QStringView name, const RegistryValue& value) = 0;
    virtual Status removeValue(QStringView name) = 0;

    /// The value as text, whatever its type: its units up to the first zero unit. Errors as value().
    Result<QString> text(QStringView name, qsizetype limitBytes) const;

    /// The value as the non-empty texts of a multi-string, in their order. Errors as value().
    Result<QStringList> multiString(QStringView name, qsizetype limitBytes) const;

    Status setText(QStringView name, QStringView text, quint32 type = value_type::String);
    Status setMultiString(QStringView name, const QStringList& texts);
    Status setDWord(QStringView name, quint32 number);
};

/// The machine's registry, HKEY_LOCAL_MACHINE of it.
class Registry
{
public:
    virtual ~Registry() = default;

    /// HKEY_LOCAL_MACHINE itself. It is always open; opening a hive below it can fail.
    virtual Result<RegistryKeyHandle> localMachine() = 0;

    /// True in a 32-bit process on a 64-bit system, where Wow64_64Key has to be asked for. Worked out anew at
    /// each call.
    virtual bool isWow64Process() const = 0;
};

/// Opens a path of subkeys, separated by backslashes, below the key, with the same rights at each level.
/// Every key on the way is closed again.
Result<RegistryKeyHandle> openPath(const RegistryKey& key, QStringView path, quint32 access);
/// The same with rights that are worked out anew at each level.
Result<RegistryKeyHandle> openPath(
    const RegistryKey& key, QStringView path, const std::function<quint32()>& access);

} // namespace quoril
