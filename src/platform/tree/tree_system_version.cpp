#include "platform/tree/tree_system_version.h"

#include "formats/name_case.h"
#include "platform/registry.h"

#include <QStringBuilder>
#include <QSysInfo>
#include <QThread>
#include <QtEndian>

#include <algorithm>
#include <optional>
#include <span>

namespace quoril {

namespace {

constexpr qsizetype LimitBytes = 4096;

struct NamedNumber
{
    QStringView name;
    quint32 number;
};

constexpr NamedNumber ProductTypes[] = {
    {u"WinNT", SystemVersion::Workstation},
    {u"LanmanNT", SystemVersion::DomainController},
    {u"ServerNT", SystemVersion::Server},
};

constexpr NamedNumber SuiteBits[] = {
    {u"Small Business", 0x0001},
    {u"Enterprise", 0x0002},
    {u"BackOffice", 0x0004},
    {u"CommunicationServer", 0x0008},
    {u"Terminal Server", 0x0010},
    {u"Small Business(Restricted)", 0x0020},
    {u"EmbeddedNT", 0x0040},
    {u"DataCenter", 0x0080},
    {u"Personal", 0x0200},
    {u"Blade", 0x0400},
    {u"Embedded(Restricted)", 0x0800},
    {u"Security Appliance", 0x1000},
    {u"Storage Server", 0x2000},
    {u"Compute Server", 0x4000},
    {u"WH Server", 0x8000},
};

constexpr NamedNumber Editions[] = {
    {u"Ultimate", 1},
    {u"HomeBasic", 2},
    {u"HomePremium", 3},
    {u"Enterprise", 4},
    {u"HomeBasicN", 5},
    {u"Business", 6},
    {u"ServerStandard", 7},
    {u"ServerDatacenter", 8},
    {u"ServerSBSStandard", 9},
    {u"ServerEnterprise", 10},
    {u"Starter", 11},
    {u"ServerDatacenterCore", 12},
    {u"ServerStandardCore", 13},
    {u"ServerEnterpriseCore", 14},
    {u"ServerEnterpriseIA64", 15},
    {u"BusinessN", 16},
    {u"ServerWeb", 17},
    {u"ServerComputeCluster", 18},
    {u"ServerSBSPremium", 25},
};

constexpr NamedNumber Architectures[] = {
    {u"x86", processor_architecture::Intel},
    {u"MIPS", processor_architecture::Mips},
    {u"ALPHA", processor_architecture::Alpha},
    {u"PPC", processor_architecture::PowerPc},
    {u"ARM", processor_architecture::Arm},
    {u"IA64", processor_architecture::Itanium},
    {u"AMD64", processor_architecture::Amd64},
    {u"ARM64", processor_architecture::Arm64},
    // the host's names
    {u"i386", processor_architecture::Intel},
    {u"x86_64", processor_architecture::Amd64},
};

quint32 numberOf(std::span<const NamedNumber> table, QStringView name, quint32 otherwise)
{
    const auto found
        = std::ranges::find_if(table, [&](const NamedNumber& row) { return foldedEquals(row.name, name); });
    return found == table.end() ? otherwise : found->number;
}

std::optional<quint32> dwordOf(const RegistryKey& key, QStringView name)
{
    const auto value = key.value(name, sizeof(quint32));
    if (!value || value->type != value_type::DWord || value->data.size() != sizeof(quint32))
        return std::nullopt;
    return qFromLittleEndian<quint32>(value->data.constData());
}

QString textValue(const RegistryKey& key, QStringView name)
{
    const auto text = key.text(name, LimitBytes);
    return text ? *text : QString();
}

/// The key below HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Control; null if there is none.
RegistryKeyHandle controlKey(const RegistryKey& localMachine, QStringView below)
{
    const QString path = QStringLiteral("SYSTEM\\CurrentControlSet\\Control\\") % below;
    auto key = openPath(localMachine, path, key_access::QueryValue);
    return key ? *std::move(key) : nullptr;
}

/// Major and minor number. From version 10 on the text stays at 6.3, and numbers stand beside it.
bool readNumbers(const RegistryKey& current, SystemVersion& version)
{
    const auto major = dwordOf(current, u"CurrentMajorVersionNumber");
    const auto minor = dwordOf(current, u"CurrentMinorVersionNumber");
    if (major && minor) {
        version.major = *major;
        version.minor = *minor;
        return true;
    }
    const QStringList parts = textValue(current, u"CurrentVersion").split(u'.');
    bool isMajor = false;
    bool isMinor = false;
    version.major = parts.value(0).toUInt(&isMajor);
    version.minor = parts.value(1).toUInt(&isMinor);
    return isMajor && isMinor;
}

quint16 nativeArchitecture(const RegistryKey* environment)
{
    const QString named = environment ? textValue(*environment, u"PROCESSOR_ARCHITECTURE") : QString();
    return quint16(numberOf(Architectures, named.isEmpty() ? QSysInfo::currentCpuArchitecture() : named,
        processor_architecture::Unknown));
}

void readProduct(const RegistryKey& options, SystemVersion& version)
{
    version.productType
        = quint8(numberOf(ProductTypes, textValue(options, u"ProductType"), SystemVersion::Workstation));
    if (const auto suites = options.multiString(u"ProductSuite", LimitBytes)) {
        for (const QString& suite : *suites)
            version.suiteMask |= quint16(numberOf(SuiteBits, suite, 0));
    }
}

} // namespace

Result<SystemVersion> readSystemVersion(const RegistryKey& localMachine)
{
    const auto current
        = openPath(localMachine, u"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion", key_access::QueryValue);
    if (!current)
        return current.failure();
    SystemVersion version;
    if (!readNumbers(**current, version))
        return Error{error::FileNotFound, {}};
    // CurrentBuild holds another text in some versions.
    bool isNumber = false;
    version.build = textValue(**current, u"CurrentBuildNumber").toUInt(&isNumber);
    if (!isNumber)
        version.build = textValue(**current, u"CurrentBuild").toUInt();
    version.servicePack = textValue(**current, u"CSDVersion");
    version.productInfo = numberOf(Editions, textValue(**current, u"EditionID"), 0);
    version.isServerR2 = version.major == 5 && version.minor == 2
        && textValue(**current, u"ProductName").endsWith(QLatin1StringView(" R2"));
    if (const auto options = controlKey(localMachine, u"ProductOptions"))
        readProduct(*options, version);
    version.nativeArchitecture
        = nativeArchitecture(controlKey(localMachine, u"Session Manager\\Environment").get());
    return version;
}

ProcessorInfo readProcessors(const RegistryKey& localMachine)
{
    const RegistryKeyHandle environment = controlKey(localMachine, u"Session Manager\\Environment");
    ProcessorInfo processors;
    processors.architecture = nativeArchitecture(environment.get());
    if (environment) {
        processors.count = textValue(*environment, u"NUMBER_OF_PROCESSORS").toUInt();
        processors.level = textValue(*environment, u"PROCESSOR_LEVEL").toUShort();
        processors.revision = textValue(*environment, u"PROCESSOR_REVISION").toUShort(nullptr, 16);
    }
    if (processors.count == 0)
        processors.count = quint32(std::max(QThread::idealThreadCount(), 0));
    return processors;
}

} // namespace quoril
