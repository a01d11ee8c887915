#include "shell/service_catalogue.h"

#include "shell/command_line_info.h"
#include "shell/quoril_manager_doc.h"
#include "shell/version_record.h"
#include "support/fake_machine.h"

namespace quoril::test {
namespace {

struct Catalogue : FakeMachine
{
    CQuorilManagerDoc document;

    Catalogue()
    {
        fakeRegistry.load(uR"([SYSTEM\CurrentControlSet\Services\Zeta]
Group=TargetPlatformEmulator
ImagePath=C:\q\emu.exe -x
DisplayName=The Zeta
[SYSTEM\CurrentControlSet\Services\Zeta\Parameters]
TargetPlatformEmulator=Platform_1
Home=C:\a
[SYSTEM\CurrentControlSet\Services\Other]
Group=Network
[SYSTEM\CurrentControlSet\Services\Alpha]
Group=TargetPlatformEmulator
[SYSTEM\CurrentControlSet\Services\Alpha\Parameters]
TargetPlatformEmulator=P
[SYSTEM\CurrentControlSet\Services\WrongCase]
Group=targetPlatformEmulator
[SYSTEM\CurrentControlSet\Services\NoValue]
Group=TargetPlatformEmulator
[SYSTEM\CurrentControlSet\Services\NoValue\Parameters]
Home=C:\b
)");
        for (const auto& [place, value] : {std::pair(u"session\\log"_s, u"..\\z.log"_s),
                 {u"ram\\size"_s, u"512"_s}, {u"cpu\\ace_enable"_s, u"yes"_s},
                 {u"rom\\container"_s, u"rom.bin"_s}, {u"toy\\container"_s, u"toy.bin"_s}})
            EXPECT_TRUE(
                fakeRegistry.key(Zeta + u"\\Parameters\\"_s + place + u"\\0"_s)->setText(u"Value", value));
    }
    /// The names of the instances that a scan finds.
    QString scan(quint32 error = error::Success)
    {
        document.ClearServices();
        EXPECT_EQ(ScanServices(document).errorNumber(), error);
        QStringList names;
        for (const ServiceInfo& service : document.m_services)
            names.append(service.Name);
        return names.join(u' ');
    }
    static inline const QString Zeta = u"SYSTEM\\CurrentControlSet\\Services\\Zeta"_s;
};

TEST(ServiceCatalogue, ListsTheInstancesInStoredOrderWithTheirSettings)
{
    Catalogue catalogue;
    for (const bool wow64 : {false, true}) {
        catalogue.fakeRegistry.wow64 = wow64;
        catalogue.fakeRegistry.asked.clear();
        EXPECT_EQ(catalogue.scan(), u"Zeta Alpha");
        const QStringList& asked = catalogue.fakeRegistry.asked;
        EXPECT_EQ(asked.filter(wow64 ? u" 0xf013f"_s : u" 0xf003f"_s), asked);
        EXPECT_GT(asked.size(), 30);
    }
    const ServiceInfo& full = catalogue.document.m_services[0];
    EXPECT_EQ(QStringList({full.EmulationType, full.ImagePath, full.DisplayName, full.HomeDir, full.LogFile,
                              full.RamSize, full.AceEnable, full.RomContainer, full.ToyContainer})
                  .join(u'|'),
        u"Platform_1|C:\\q\\emu.exe -x|The Zeta|C:\\a\\|C:\\z.log|512|yes|rom.bin|toy.bin");
    const ServiceInfo& bare = catalogue.document.m_services[1];
    EXPECT_EQ(bare.HomeDir + bare.LogFile + bare.RamSize + bare.ImagePath + bare.DisplayName, QString());
}

TEST(ServiceCatalogue, BuffersHaveTheirLimitsInBytes)
{
    // 254 units and the closing zero are 510 bytes; one more unit is too much for 511.
    Catalogue catalogue;
    const RegistryKeyHandle key = catalogue.fakeRegistry.key(Catalogue::Zeta + u"\\Parameters"_s);
    const auto& services = catalogue.document.m_services;
    ASSERT_TRUE(key->setText(u"Home", QString(254, u'h')));
    catalogue.scan();
    EXPECT_EQ(services[0].HomeDir, QString(254, u'h') + u'\\');
    ASSERT_TRUE(key->setText(u"Home", QString(255, u'h')));
    ASSERT_TRUE(key->setText(u"TargetPlatformEmulator", QString(510, u't')));
    catalogue.scan();
    EXPECT_EQ(services[0].HomeDir, QString());
    EXPECT_EQ(services[0].LogFile, u"\\z.log");
    EXPECT_EQ(services[0].EmulationType.size(), 510);
    ASSERT_TRUE(key->setText(u"TargetPlatformEmulator", QString(511, u't')));
    EXPECT_EQ(catalogue.scan(), u"Alpha");
}

TEST(ServiceCatalogue, ARefusedKeyCostsWhatLiesBelowItAndNothingElse)
{
    const struct
    {
        QStringView path;
        quint32 error;
        QStringView names, ram;
    } cases[] = {
        {u"SYSTEM", error::AccessDenied, {}, {}},
        {u"SYSTEM\\CurrentControlSet", error::AccessDenied, {}, {}},
        {u"SYSTEM\\CurrentControlSet\\Services", error::AccessDenied, {}, {}},
        {u"SYSTEM\\CurrentControlSet\\Services\\Zeta", 0, u"Alpha", {}},
        {u"SYSTEM\\CurrentControlSet\\Services\\Zeta\\Parameters", 0, u"Alpha", {}},
        {u"SYSTEM\\CurrentControlSet\\Services\\Zeta\\Parameters\\ram", 0, u"Zeta Alpha", {}},
        {u"SYSTEM\\CurrentControlSet\\Services\\Zeta\\Parameters\\ram\\size\\0", 0, u"Zeta Alpha", {}},
        {u"SYSTEM\\CurrentControlSet\\Services\\Other", 0, u"Zeta Alpha", u"512"},
    };
    for (const auto& row : cases) {
        Catalogue catalogue;
        catalogue.fakeRegistry.refuse(row.path, key_access::SetValue);
        EXPECT_EQ(catalogue.scan(row.error), row.names) << row.path;
        const auto& services = catalogue.document.m_services;
        EXPECT_EQ(services.empty() ? QString() : services[0].RamSize, row.ram);
    }
}

TEST(ServiceCatalogue, EveryFailingCallLeavesNothingOpen)
{
    Catalogue catalogue;
    int call = 0;
    do {
        catalogue.calls.failAt(++call);
        catalogue.document.ClearServices();
        static_cast<void>(ScanServices(catalogue.document));
        EXPECT_LE(catalogue.document.m_services.size(), 2U);
        EXPECT_EQ(catalogue.calls.open(), 0) << call;
    } while (catalogue.calls.count() >= call);
    EXPECT_GT(call - 1, 20); // each that a scan makes, and one more
}

TEST(LogPath, IsMadeAbsoluteWithTheHome)
{
    const std::array<QStringView, 3> cases[] = {
        {u"C:\\a\\b\\", u"x.log", u"C:\\a\\b\\x.log"},
        {u"C:\\a\\b\\", u"sub\\x.log", u"C:\\a\\b\\sub\\x.log"},
        {u"C:\\a\\b\\", u".\\x.log", u"C:\\a\\b\\x.log"},
        {u"C:\\a\\b\\", u"..\\x.log", u"C:\\a\\x.log"},
        {u"C:\\a\\b\\", u"..\\..\\x.log", u"C:\\a\\..\\x.log"},
        {u"C:\\a\\b\\", u"D:\\y\\x.log", u"D:\\y\\x.log"},
        {u"C:\\a\\b\\", u"D:x.log", u"D:x.log"},
        {u"C:\\a\\b\\", u"\\y\\x.log", u"\\y\\x.log"},
        {u"C:\\a\\b\\", u"", u"C:\\a\\b\\"},
        {u"C:/a/b/", u"../x.log", u"C:/a\\x.log"},
        {u"", u"./x.log", u"x.log"},
        {u"", u"../x.log", u"\\x.log"},
    };
    for (const auto& [home, log, expected] : cases) {
        ServiceInfo service;
        service.HomeDir = home.toString();
        service.LogFile = log.toString();
        MakeLogPathAbsolute(service);
        EXPECT_EQ(service.LogFile, expected);
    }
}

TEST(ServiceRecord, ACopyLeavesTheDeviceScanOut)
{
    ServiceInfo service, assigned;
    service.Name = u"A"_s;
    service.m_devices->resize(2);
    assigned.m_devices->resize(1);
    assigned = service;
    for (const ServiceInfo& copy : {ServiceInfo(service), assigned}) {
        EXPECT_EQ(copy.Name, u"A");
        EXPECT_TRUE(copy.m_devices->empty());
    }
    EXPECT_EQ(service.m_devices->size(), 2U);
}

TEST(Version, IsReadFromTheFirstDigitOn)
{
    const std::pair<QStringView, std::array<qint32, 4>> cases[] = {
        {u"1.14", {1, 14, 0, 0}},
        {u"V 2.3.4.5 beta", {2, 3, 4, 5}},
        {u"7 . 8", {7, 0, 0, 0}},
        {u"1. 2.-3.+4", {1, 2, -3, 4}},
        {u"none", {0, 0, 0, 0}},
        {u"99999999999.1", {0x7FFFFFFF, 1, 0, 0}},
    };
    for (const auto& [text, numbers] : cases) {
        const VersionRecord version = VersionRecord::parse(text);
        EXPECT_EQ((std::array{version.major, version.minor, version.sub_minor, version.build}), numbers);
    }
    const VersionRecord longest = VersionRecord::parse(QString(1022, u'v') + u"12.3"_s);
    EXPECT_EQ(longest.version_text.size(), 255);
    EXPECT_EQ((std::pair{longest.major, longest.minor}), (std::pair{1, 0})); // of 2047 bytes
}

TEST(CommandLine, IsTakenApartAsTheFrameworkDoes)
{
    using Request = CommandLineInfo::Request;
    const struct
    {
        QStringList arguments;
        QStringView flagSigns;
        Request request;
        QString file;
    } cases[] = {
        {{}, u"-", Request::Window, {}},
        {{u"p"_s}, u"-", Request::Window, {}},
        {{u"p"_s, u"--help"_s, u"f"_s}, u"-", Request::Help, u"f"_s},
        {{u"p"_s, u"-v"_s}, u"-/", Request::Version, {}},
        {{u"p"_s, u"f"_s, u"--version"_s}, u"-", Request::Window, u"f"_s},
        {{u"p"_s, u""_s, u"-x"_s, u"/y"_s, u"z"_s}, u"-", Request::Window, u"/y"_s},
        {{u"p"_s, u""_s, u"-x"_s, u"/y"_s, u"z"_s}, u"-/", Request::Window, u"z"_s},
    };
    for (const auto& [arguments, flagSigns, request, file] : cases) {
        const CommandLineInfo info = ParseCommandLine(arguments, flagSigns);
        EXPECT_EQ(info.request, request) << arguments.join(u' ');
        EXPECT_EQ(info.fileName, file) << arguments.join(u' ');
    }
}

} // namespace
} // namespace quoril::test
