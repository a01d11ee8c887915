#include "platform/windows/windows_registry.h"

#include "platform/windows/win32.h"

#include <algorithm>
#include <vector>

namespace quoril {

namespace {

constexpr std::size_t MaximumValueNameUnits = 16383;
constexpr qsizetype UsualValueBytes = 1024;

using OwnedKey = OwnedHandle<HKEY, ::RegCloseKey>;

/// A key's name is one level: the calls would take a path, and the key itself for an empty name.
bool isKeyName(QStringView name)
{
    return !name.isEmpty() && !name.contains(u'\\') && !hasZeroUnit(name);
}

class WindowsKey : public RegistryKey
{
public:
    /// Doesn't own the key: a predefined one is never closed.
    explicit WindowsKey(HKEY predefined) : m_key(predefined) { }
    explicit WindowsKey(OwnedKey key) : m_owned(std::move(key)), m_key(m_owned.get()) { }

    Result<RegistryKeyHandle> open(QStringView name, quint32 access) const override
    {
        if (!isKeyName(name))
            return Error{error::FileNotFound, {}};
        HKEY key = nullptr;
        const Status opened = statusOf(::RegOpenKeyExW(m_key, wide(name.toString()), 0, access, &key));
        return handleOf(opened, key);
    }

    Result<RegistryKeyHandle> openBelow(QStringView path, quint32 access) const override
    {
        if (path.isEmpty() || hasZeroUnit(path))
            return Error{error::FileNotFound, {}};
        HKEY key = nullptr;
        const Status opened = statusOf(::RegOpenKeyExW(m_key, wide(path.toString()), 0, access, &key));
        return handleOf(opened, key);
    }

    Result<RegistryKeyHandle> create(QStringView name, quint32 access) override
    {
        if (!isKeyName(name))
            return Error{error::InvalidParameter, {}};
        HKEY key = nullptr;
        const Status made = statusOf(::RegCreateKeyExW(m_key, wide(name.toString()), 0, nullptr,
            REG_OPTION_NON_VOLATILE, access, nullptr, &key, nullptr));
        return handleOf(made, key);
    }

    Status removeTree(QStringView name) override
    {
        // Without a name the call would empty this key.
        if (!isKeyName(name))
            return Error{error::FileNotFound, {}};
        return statusOf(::RegDeleteTreeW(m_key, wide(name.toString())));
    }

    Result<QString> subkeyName(quint32 index, qsizetype roomUnits) const override
    {
        std::vector<wchar_t> units(static_cast<std::size_t>(roomUnits) + 1);
        auto size = static_cast<DWORD>(units.size());
        const Status found = statusOf(
            ::RegEnumKeyExW(m_key, index, units.data(), &size, nullptr, nullptr, nullptr, nullptr));
        return found ? QString::fromWCharArray(units.data(), static_cast<qsizetype>(size))
                     : Result<QString>(found.failure());
    }

    Result<QString> valueName(quint32 index) const override
    {
        std::vector<wchar_t> units(MaximumValueNameUnits + 1);
        auto size = static_cast<DWORD>(units.size());
        const Status found = statusOf(
            ::RegEnumValueW(m_key, index, units.data(), &size, nullptr, nullptr, nullptr, nullptr));
        return found ? QString::fromWCharArray(units.data(), static_cast<qsizetype>(size))
                     : Result<QString>(found.failure());
    }

    Result<RegistryValue> value(QStringView name, qsizetype limitBytes) const override
    {
        if (hasZeroUnit(name))
            return Error{error::FileNotFound, {}};
        const QString valueName = name.toString();
        RegistryValue found;
        found.data.resize(std::min(limitBytes, UsualValueBytes));
        // The value may grow between two calls.
        while (true) {
            DWORD type = 0;
            auto size = static_cast<DWORD>(found.data.size());
            const LSTATUS number = ::RegQueryValueExW(
                m_key, wide(valueName), nullptr, &type, reinterpret_cast<BYTE*>(found.data.data()), &size);
            if (number == ERROR_SUCCESS) {
                found.type = type;
                found.data.resize(static_cast<qsizetype>(size));
                return found;
            }
            const bool fits = static_cast<qsizetype>(size) <= limitBytes
                && static_cast<qsizetype>(size) > found.data.size();
            if (number != ERROR_MORE_DATA || !fits)
                return statusOf(number).failure();
            found.data.resize(static_cast<qsizetype>(size));
        }
    }

    Status setValue(QStringView name, const RegistryValue& value) override
    {
        if (hasZeroUnit(name))
            return Error{error::InvalidParameter, {}};
        return statusOf(::RegSetValueExW(m_key, wide(name.toString()), 0, value.type,
            reinterpret_cast<const BYTE*>(value.data.constData()), static_cast<DWORD>(value.data.size())));
    }

    Status removeValue(QStringView name) override
    {
        if (hasZeroUnit(name))
            return Error{error::FileNotFound, {}};
        return statusOf(::RegDeleteValueW(m_key, wide(name.toString())));
    }

private:
    static Result<RegistryKeyHandle> handleOf(const Status& opened, HKEY key)
    {
        if (!opened)
            return opened.failure();
        return RegistryKeyHandle(std::make_unique<WindowsKey>(OwnedKey(key)));
    }

    OwnedKey m_owned;
    HKEY m_key;
};

} // namespace

Result<RegistryKeyHandle> WindowsRegistry::localMachine()
{
    return RegistryKeyHandle(std::make_unique<WindowsKey>(HKEY_LOCAL_MACHINE));
}

bool WindowsRegistry::isWow64Process() const
{
    const auto ask = systemFunction<BOOL WINAPI(HANDLE, BOOL*)>(L"Kernel32", "IsWow64Process");
    BOOL isWow64 = FALSE;
    return ask && ask(::GetCurrentProcess(), &isWow64) && isWow64;
}

} // namespace quoril
