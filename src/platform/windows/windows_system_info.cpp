#include "platform/windows/windows_system_info.h"

#include "platform/host/host_system.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_version_block.h"

#include <QDir>

#include <array>
#include <optional>

namespace quoril {

namespace {

constexpr DWORD ComputerNameUnits = 255;
constexpr int ServerR2Metric = 89;

/// The version that the system reports to programs: none newer than their manifest says they know.
std::optional<OSVERSIONINFOEXW> reportedVersion()
{
    OSVERSIONINFOEXW version = {};
    version.dwOSVersionInfoSize = sizeof version;
#ifdef _MSC_VER
#pragma warning(suppress : 4996) // the call is deprecated, its answer is what the console shows
#endif
    if (!::GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&version)))
        return std::nullopt;
    return version;
}

quint16 nativeArchitecture()
{
    SYSTEM_INFO info = {};
    const auto native = systemFunction<void WINAPI(SYSTEM_INFO*)>(L"kernel32.dll", "GetNativeSystemInfo");
    native ? native(&info) : ::GetSystemInfo(&info);
    return info.wProcessorArchitecture;
}

quint32 productInfo()
{
    const auto ask
        = systemFunction<BOOL WINAPI(DWORD, DWORD, DWORD, DWORD, DWORD*)>(L"kernel32.dll", "GetProductInfo");
    DWORD product = 0;
    return ask && ask(6, 0, 0, 0, &product) ? quint32(product) : 0;
}

struct LocalFreeDeleter
{
    void operator()(wchar_t* memory) const { ::LocalFree(memory); }
};

} // namespace

Result<QString> WindowsSystemInfo::computerName() const
{
    std::array<wchar_t, ComputerNameUnits + 1> units = {};
    DWORD size = ComputerNameUnits;
    if (!::GetComputerNameW(units.data(), &size))
        return lastError();
    return QString::fromWCharArray(units.data(), static_cast<qsizetype>(size));
}

Result<SystemVersion> WindowsSystemInfo::version() const
{
    const auto reported = reportedVersion();
    if (!reported)
        return lastError();
    SystemVersion version;
    version.platformId = reported->dwPlatformId;
    version.major = reported->dwMajorVersion;
    version.minor = reported->dwMinorVersion;
    version.build = reported->dwBuildNumber;
    version.servicePack = textOf(reported->szCSDVersion);
    version.productType = reported->wProductType;
    version.suiteMask = reported->wSuiteMask;
    version.isServerR2 = ::GetSystemMetrics(ServerR2Metric) != 0;
    version.nativeArchitecture = nativeArchitecture();
    version.productInfo = productInfo();
    return version;
}

ProcessorInfo WindowsSystemInfo::processors() const
{
    SYSTEM_INFO info = {};
    ::GetSystemInfo(&info);
    return {info.dwNumberOfProcessors, info.wProcessorArchitecture, info.wProcessorLevel,
        info.wProcessorRevision};
}

Result<quint64> WindowsSystemInfo::physicalMemory() const
{
    return hostMemory();
}

QString WindowsSystemInfo::windowsDirectory() const
{
    // On a terminal server each user has a Windows folder of his own besides.
    std::array<wchar_t, MAX_PATH> units = {};
    const UINT size = ::GetSystemWindowsDirectoryW(units.data(), static_cast<UINT>(units.size()));
    QString folder = size < units.size() ? textOf(units.data()) : QString();
    while (folder.endsWith(u'\\'))
        folder.chop(1);
    return folder;
}

Result<QString> WindowsSystemInfo::programVersion(const QString& hostPath) const
{
    return windowsFileVersion(QDir::toNativeSeparators(hostPath));
}

QString WindowsSystemInfo::errorText(quint32 number) const
{
    wchar_t* allocated = nullptr;
    const DWORD size = ::FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_ARGUMENT_ARRAY, nullptr,
        number, 0, reinterpret_cast<wchar_t*>(&allocated), 0, nullptr);
    const std::unique_ptr<wchar_t, LocalFreeDeleter> text(allocated);
    return size == 0 ? QString() : QString::fromWCharArray(text.get(), static_cast<qsizetype>(size));
}

} // namespace quoril
