#include "report/operating_system_name.h"

#include <QStringBuilder>
#include <QStringView>

#include <algorithm>
#include <iterator>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

namespace suite {
constexpr quint16 Enterprise = 2;
constexpr quint16 Datacenter = 128;
constexpr quint16 Personal = 512;
constexpr quint16 Web = 1024;
constexpr quint16 StorageServer = 8192;
constexpr quint16 ComputeCluster = 16384;
} // namespace suite

using processor_architecture::Amd64;
using processor_architecture::Intel;
using processor_architecture::Itanium;

/// Which product a row speaks of.
enum class Product
{
    Any,
    Workstation,
    ServerR2,
    OnlyStorage ///< a suite mask with no other bit
};

constexpr int AnyArchitecture = -1;
constexpr quint16 AnySuite = 0;

/// A text of a version. Of the rows of one version the first counts whose conditions all hold.
struct Row
{
    quint32 major;
    quint32 minor;
    Product product;
    int architecture;
    quint16 suiteBit;
    QStringView text;

    bool holds(const SystemVersion& version) const
    {
        return version.major == major && version.minor == minor && holdsProduct(version)
            && (architecture == AnyArchitecture || version.nativeArchitecture == architecture)
            && (suiteBit == AnySuite || version.suiteMask & suiteBit);
    }

private:
    bool holdsProduct(const SystemVersion& version) const
    {
        switch (product) {
        case Product::Workstation:
            return version.productType == SystemVersion::Workstation;
        case Product::ServerR2:
            return version.isServerR2;
        case Product::OnlyStorage:
            return version.suiteMask == suite::StorageServer;
        case Product::Any:
            break;
        }
        return true;
    }
};

constexpr Row Names[] = {
    {6, 1, Product::Workstation, AnyArchitecture, AnySuite, u"Windows 7"},
    {6, 1, Product::Any, AnyArchitecture, AnySuite, u"Windows Server 2008 R2"},
    {6, 0, Product::Workstation, AnyArchitecture, AnySuite, u"Windows Vista"},
    {6, 0, Product::Any, AnyArchitecture, AnySuite, u"Windows Server 2008"},
    {5, 2, Product::ServerR2, AnyArchitecture, AnySuite, u"Windows Server 2003 R2"},
    {5, 2, Product::OnlyStorage, AnyArchitecture, AnySuite, u"Windows Storage Server 2003"},
    {5, 2, Product::Workstation, Amd64, AnySuite, u"Windows XP, Professional x64 Edition"},
    {5, 2, Product::Any, AnyArchitecture, AnySuite, u"Windows Server 2003"},
    {5, 1, Product::Any, AnyArchitecture, AnySuite, u"Windows XP"},
    {5, 0, Product::Any, AnyArchitecture, AnySuite, u"Windows 2000"},
};

constexpr Row Editions[] = {
    {6, 0, Product::Any, Amd64, AnySuite, u", 64-bit"},
    {6, 0, Product::Any, Intel, AnySuite, u", 32-bit"},
    {5, 2, Product::Workstation, AnyArchitecture, AnySuite, u""},
    {5, 2, Product::Any, Itanium, suite::Datacenter, u", Datacenter Edition for Itanium-based Systems"},
    {5, 2, Product::Any, Itanium, suite::Enterprise, u", Enterprise Edition for Itanium-based Systems"},
    {5, 2, Product::Any, Itanium, AnySuite, u""},
    {5, 2, Product::Any, Amd64, suite::Datacenter, u", Datacenter x64 Edition"},
    {5, 2, Product::Any, Amd64, suite::Enterprise, u", Enterprise x64 Edition"},
    {5, 2, Product::Any, Amd64, AnySuite, u", Standard x64 Edition"},
    {5, 2, Product::Any, AnyArchitecture, suite::ComputeCluster, u", Compute Cluster Edition"},
    {5, 2, Product::Any, AnyArchitecture, suite::Datacenter, u", Datacenter Edition"},
    {5, 2, Product::Any, AnyArchitecture, suite::Enterprise, u", Enterprise Edition"},
    {5, 2, Product::Any, AnyArchitecture, suite::Web, u", Web Edition"},
    {5, 2, Product::Any, AnyArchitecture, AnySuite, u", Standard Edition"},
    {5, 1, Product::Any, AnyArchitecture, suite::Personal, u" Home Edition"},
    {5, 1, Product::Any, AnyArchitecture, AnySuite, u" Professional"},
    {5, 0, Product::Workstation, AnyArchitecture, AnySuite, u" Professional"},
    {5, 0, Product::Any, AnyArchitecture, suite::Datacenter, u" Datacenter Server"},
    {5, 0, Product::Any, AnyArchitecture, suite::Enterprise, u" Advanced Server"},
    {5, 0, Product::Any, AnyArchitecture, AnySuite, u" Server"},
};

struct ProductInfoRow
{
    quint32 productInfo;
    QStringView text;
};

/// What version 6.0 says of its edition.
constexpr ProductInfoRow ProductInfoTexts[] = {
    {1, u" Ultimate Edition"},
    {2, u" Home Basic Edition"},
    {3, u" Home Premium Edition"},
    {4, u" Enterprise Edition"},
    {6, u" Business Edition"},
    {7, u" Standard Edition"},
    {8, u" Datacenter Edition"},
    {9, u" Small Business Server"},
    {10, u" Enterprise Edition"},
    {11, u" Starter Edition"},
    {12, u" Datacenter Edition (core installation)"},
    {13, u" Standard Edition (core installation)"},
    {14, u" Enterprise Edition (core installation)"},
    {15, u" Enterprise Edition for Itanium-based Systems"},
    {17, u" Web Server Edition"},
    {18, u" Cluster Server Edition"},
    {25, u" Small Business Server Premium Edition"},
};

struct OldRow
{
    quint32 minor;
    QStringView name;
    QStringView letters; ///< second letters of the service pack's text that add the release
    QStringView release;
};

/// Version 4 of the line that isn't NT.
constexpr OldRow OldNames[] = {
    {0, u"Microsoft Windows 95", u"CB", u" OSR2"},
    {10, u"Microsoft Windows 98", u"A", u" SE"},
    {90, u"Microsoft Windows Millennium Edition", u"", u""},
};

template <typename Table> QStringView textOf(const Table& table, const SystemVersion& version)
{
    const auto found = std::ranges::find_if(table, [&](const Row& row) { return row.holds(version); });
    return found == std::end(table) ? QStringView() : found->text;
}

QStringView productInfoText(const SystemVersion& version)
{
    const auto found = std::ranges::find(ProductInfoTexts, version.productInfo, &ProductInfoRow::productInfo);
    const bool isNamed = version.major == 6 && version.minor == 0;
    return isNamed && found != std::end(ProductInfoTexts) ? found->text : QStringView();
}

QString describeNt(const SystemVersion& version)
{
    return u"Microsoft "_s % textOf(Names, version) % productInfoText(version) % textOf(Editions, version)
        % u", " % version.servicePack % u" (Build " % QString::number(version.build & 0xFFFF) % u')';
}

QString describeOld(const SystemVersion& version)
{
    const auto found = std::ranges::find(OldNames, version.minor, &OldRow::minor);
    if (version.major != 4 || found == std::end(OldNames))
        return {};
    const bool isRelease = version.servicePack.size() > 1 && found->letters.contains(version.servicePack[1]);
    return found->name % (isRelease ? found->release : QStringView());
}

} // namespace

QString DescribeOperatingSystem(const Result<SystemVersion>& version)
{
    constexpr quint32 platformWin32s = 0;
    constexpr quint32 platformWindows = 1;
    if (!version)
        return u"Unknown Product"_s;
    if (version->platformId == SystemVersion::PlatformNt && version->major > 4)
        return describeNt(*version);
    if (version->platformId == platformWin32s)
        return u"Microsoft Win32s"_s;
    return version->platformId == platformWindows ? describeOld(*version) : u"Microsoct Unknown"_s;
}

} // namespace quoril
