#include "platform/host/host_system.h"

#include "platform/host/windows/host_handle.h"

#include <array>
#include <chrono>

namespace quoril {

QString hostUserName()
{
    std::array<wchar_t, MAX_COMPUTERNAME_LENGTH + 1> host = {};
    auto hostSize = static_cast<DWORD>(host.size());
    ::GetComputerNameW(host.data(), &hostSize);
    constexpr std::size_t longestUserName = 256;
    std::array<wchar_t, longestUserName + 1> user = {};
    auto userSize = static_cast<DWORD>(user.size());
    ::GetUserNameW(user.data(), &userSize);
    return QString::fromWCharArray(host.data()) + u'\\' + QString::fromWCharArray(user.data());
}

void reportFileSizeLimits() { }

quint64 hostTickCount()
{
    // The performance counter, which goes on while the system sleeps; GetTickCount64 has steps of 16 ms.
    const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
    return quint64(std::chrono::floor<std::chrono::milliseconds>(sinceStart).count());
}

Result<quint64> hostMemory()
{
    MEMORYSTATUSEX status = {};
    status.dwLength = sizeof status;
    if (!::GlobalMemoryStatusEx(&status))
        return lastHostError({});
    return quint64(status.ullTotalPhys);
}

} // namespace quoril
