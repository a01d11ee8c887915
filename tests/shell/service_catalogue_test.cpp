#include "shell/service_catalogue.h"

#include "shell/command_line_info.h"
#include "shell/quoril_manager_doc.h"
#include "shell/version_record.h"
#include "support/fake_machine.h"

namespace quoril::test {
namespace {

class ServiceCatalogueTest : public testing::Test
{
protected:
    FakeMachine m_machine;
    CQuorilManagerDoc m_document;

    QStringList scan()
    {
        m_document.ClearServices();
        EXPECT_TRUE(ScanServices(m_document));
        EXPECT_EQ(m_machine.calls.open(), 0);
        QStringList names;
        for (const ServiceInfo& service : m_document.m_services)
            names.append(service.Name);
        return names;
    }
};

const QString Full = QStringLiteral(R"([SYSTEM\CurrentControlSet\Services\Zeta]
Group=TargetPlatformEmulator
ImagePath=C:\q\emu.exe -x
DisplayName=The Zeta
[SYSTEM\CurrentControlSet\Services\Zeta\Parameters]
TargetPlatformEmulator=Platform_1
Home=C:\a
[SYSTEM\CurrentControlSet\Services\Zeta\Parameters\session\log\0]
Value=..\z.log
[SYSTEM\CurrentControlSet\Services\Zeta\Parameters\ram\size\0]
Value=512
[SYSTEM\CurrentControlSet\Services\Zeta\Parameters\cpu\ace_enable\0]
Value=yes
[SYSTEM\CurrentControlSet\Services\Zeta\Parameters\rom\container\0]
Value=rom.bin
[SYSTEM\CurrentControlSet\Services\Zeta\Parameters\toy\container\0]
Value=toy.bin
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

TEST_F(ServiceCatalogueTest, ListsTheInstancesInStoredOrderWithTheirSettings)
{
    m_machine.fakeRegistry.load(Full);
    EXPECT_EQ(scan(), QStringList({QStringLiteral("Zeta"), QStringLiteral("Alpha")}));
    const ServiceInfo& full = m_document.m_services[0];
    EXPECT_EQ(QStringList({full.EmulationType, full.ImagePath, full.DisplayName, full.HomeDir, full.LogFile,
                  full.RamSize, full.AceEnable, full.RomContainer, full.ToyContainer}),
        QStringLiteral("Platform_1|C:\\q\\emu.exe -x|The Zeta|C:\\a\\|C:\\z.log|512|yes|rom.bin|toy.bin")
            .split(u'|'));
    const ServiceInfo& bare = m_document.m_services[1];
    EXPECT_EQ(bare.HomeDir + bare.LogFile + bare.RamSize + bare.ImagePath + bare.DisplayName, QString());

    for (const bool wow64 : {false, true}) {
        m_machine.fakeRegistry.wow64 = wow64;
        m_machine.fakeRegistry.asked.clear();
        scan();
        const QString mask = wow64 ? QStringLiteral(" 0xf013f") : QStringLiteral(" 0xf003f");
        EXPECT_EQ(m_machine.fakeRegistry.asked.filter(mask), m_machine.fakeRegistry.asked);
        EXPECT_GT(m_machine.fakeRegistry.asked.size(), 30);
    }
}

TEST_F(ServiceCatalogueTest, BuffersHaveTheirLimitsInBytes)
{
    m_machine.fakeRegistry.load(Full);
    const auto setText = [this](QStringView name, const QString& value) {
        return m_machine.fakeRegistry.key(u"SYSTEM\\CurrentControlSet\\Services\\Zeta\\Parameters")
            ->setText(name, value)
            .ok();
    };
    // 254 units and the closing zero are 510 bytes; one more unit is too much for 511.
    ASSERT_TRUE(setText(u"Home", QString(254, u'h')));
    scan();
    EXPECT_EQ(m_document.m_services[0].HomeDir, QString(254, u'h') + u'\\');
    ASSERT_TRUE(setText(u"Home", QString(255, u'h')));
    ASSERT_TRUE(setText(u"TargetPlatformEmulator", QString(510, u't')));
    scan();
    EXPECT_EQ(m_document.m_services[0].HomeDir, QString());
    EXPECT_EQ(m_document.m_services[0].LogFile, QStringLiteral("\\z.log"));
    EXPECT_EQ(m_document.m_services[0].EmulationType.size(), 510);
    ASSERT_TRUE(setText(u"TargetPlatformEmulator", QString(511, u't')));
    EXPECT_EQ(scan(), QStringList(QStringLiteral("Alpha")));
}

TEST_F(ServiceCatalogueTest, ARefusedKeyCostsWhatLiesBelowItAndNothingElse)
{
    struct
    {
        QStringView path;
        quint32 error;
        QString names;
        QString ram;
    } const cases[] = {
        {u"SYSTEM", error::AccessDenied, {}, {}},
        {u"SYSTEM\\CurrentControlSet", error::AccessDenied, {}, {}},
        {u"SYSTEM\\CurrentControlSet\\Services", error::AccessDenied, {}, {}},
        {u"SYSTEM\\CurrentControlSet\\Services\\Zeta", 0, QStringLiteral("Alpha"), {}},
        {u"SYSTEM\\CurrentControlSet\\Services\\Zeta\\Parameters", 0, QStringLiteral("Alpha"), {}},
        {u"SYSTEM\\CurrentControlSet\\Services\\Zeta\\Parameters\\ram", 0, QStringLiteral("Zeta Alpha"), {}},
        {u"SYSTEM\\CurrentControlSet\\Services\\Zeta\\Parameters\\ram\\size\\0", 0,
            QStringLiteral("Zeta Alpha"), {}},
        {u"SYSTEM\\CurrentControlSet\\Services\\Other", 0, QStringLiteral("Zeta Alpha"),
            QStringLiteral("512")},
    };
    for (const auto& row : cases) {
        FakeMachine machine;
        machine.fakeRegistry.load(Full);
        machine.fakeRegistry.refuse(row.path, key_access::SetValue);
        CQuorilManagerDoc document;
        EXPECT_EQ(ScanServices(document).errorNumber(), row.error);
        QStringList names;
        for (const ServiceInfo& service : document.m_services)
            names.append(service.Name);
        EXPECT_EQ(names.join(u' '), row.names) << row.path;
        EXPECT_EQ(document.m_services.empty() ? QString() : document.m_services[0].RamSize, row.ram);
        EXPECT_EQ(machine.calls.open(), 0);
    }
}

TEST_F(ServiceCatalogueTest, EveryFailingCallLeavesNothingOpen)
{
    m_machine.fakeRegistry.load(Full);
    m_machine.calls.failAt(0);
    static_cast<void>(ScanServices(m_document));
    const int calls = m_machine.calls.count();
    ASSERT_GT(calls, 20);
    for (int call = 1; call <= calls; ++call) {
        m_machine.calls.failAt(call);
        m_document.ClearServices();
        static_cast<void>(ScanServices(m_document));
        EXPECT_LE(m_document.m_services.size(), 2U);
        EXPECT_EQ(m_machine.calls.open(), 0) << call;
    }
}

TEST(LogPath, IsMadeAbsoluteWithTheHome)
{
    struct
    {
        QStringView home;
        QStringView log;
        QStringView expected;
    } const cases[] = {
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
    for (const auto& row : cases) {
        ServiceInfo service;
        service.HomeDir = row.home.toString();
        service.LogFile = row.log.toString();
        MakeLogPathAbsolute(service);
        EXPECT_EQ(service.LogFile, row.expected.toString());
    }
}

TEST(ServiceRecord, ACopyLeavesTheDeviceScanOut)
{
    ServiceInfo service;
    service.Name = QStringLiteral("A");
    service.pka[1].Units[3].Value = QStringLiteral("disk");
    service.m_devices->resize(2);
    ServiceInfo assigned;
    assigned.m_devices->resize(1);
    assigned = service;
    for (const ServiceInfo& copy : {ServiceInfo(service), assigned}) {
        EXPECT_EQ(copy.Name, service.Name);
        EXPECT_EQ(copy.pka[1].Units[3].Value, QStringLiteral("disk"));
        EXPECT_TRUE(copy.m_devices->empty());
    }
    EXPECT_EQ(service.m_devices->size(), 2U);
}

TEST(Version, IsReadFromTheFirstDigitOn)
{
    struct
    {
        QStringView text;
        std::array<qint32, 4> numbers;
    } const cases[] = {
        {u"1.14", {1, 14, 0, 0}},
        {u"V 2.3.4.5 beta", {2, 3, 4, 5}},
        {u"7 . 8", {7, 0, 0, 0}},
        {u"1. 2.-3.+4", {1, 2, -3, 4}},
        {u"none", {0, 0, 0, 0}},
        {u"99999999999.1", {0x7FFFFFFF, 1, 0, 0}},
    };
    for (const auto& row : cases) {
        const VersionRecord version = VersionRecord::parse(row.text);
        EXPECT_EQ((std::array{version.major, version.minor, version.sub_minor, version.build}), row.numbers);
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
