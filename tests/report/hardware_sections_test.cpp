#include "report/hardware_sections.h"

#include "report/operating_system_name.h"
#include "report/report_text.h"
#include "support/fake_machine.h"

namespace quoril::test {
namespace {

class HardwareSectionsTest : public testing::Test
{
protected:
    FakeMachine m_machine;

    QStringList written(const HardwareSections& wanted = {})
    {
        CollectedText section;
        writeHardwareSections(section, wanted);
        EXPECT_EQ(m_machine.calls.open(), 0);
        return section.text.split(u"\r\n"_s);
    }
    QString processorLine() { return written().value(5); }
};

const QString Processor = u"HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0"_s;

TEST_F(HardwareSectionsTest, DescribeTheHost)
{
    m_machine.fakeSystemInfo.systemVersion
        = {.major = 6, .minor = 1, .build = 0x10000 + 7601, .servicePack = u"Service Pack 1"_s};
    m_machine.fakeSystemInfo.processorInfo.count = 4;
    m_machine.fakeSystemInfo.memory = (quint64(16) << 30) + 1024;
    m_machine.fakeRegistry.load(u"[%1]\nProcessorNameString=Sample CPU\nVendorIdentifier=Maker\n"_s
                                u"Identifier=Family 6\n~MHz=dword:2666\n"_s.arg(Processor));
    QStringList block{u"-------------------- Hardware configuration --------------------"_s,
        u"Computer id: \"HOST\""_s, u"Operating system: Microsoft Windows 7, Service Pack 1 (Build 7601)"_s,
        {}, u"Host CPU numbers: 4"_s, u"Host CPU: Sample CPU. . . (Maker, Family 6, ~2700MHz)"_s,
        u"CPU running at 2700 Mhz"_s, u"Physical memory size: 16385Mb (total)"_s,
        u"-------------------- End of hardware configuration --------------------"_s, {}, {}};
    EXPECT_EQ(written(), block);
    EXPECT_TRUE(m_machine.fakeRegistry.asked.contains(u"0 0xf003f"_s));

    m_machine.calls.failAt(1);
    block[1] = u"Computer id: \"Unknown local computer name\""_s;
    EXPECT_EQ(written(), block);
}

TEST_F(HardwareSectionsTest, ShowWhatIsUnknown)
{
    m_machine.fakeRegistry.refuse(Processor, key_access::SetValue);
    m_machine.fakeRegistry.load(u"[%1]\n~MHz=dword:2649\n"_s.arg(Processor));
    const QStringList lines = written();
    EXPECT_EQ(lines.value(4), u"Host CPU numbers: 0");
    EXPECT_EQ(lines.value(5), u"Host CPU: <UNKNOWN>");
    EXPECT_EQ(lines.value(6), u"CPU running at 0 Mhz");
    EXPECT_EQ(lines.value(7), u"Physical memory size: 0Mb (total)");
}

TEST_F(HardwareSectionsTest, TakeTheProcessorFromTheRegistry)
{
    m_machine.fakeSystemInfo.processorInfo.count = 1;
    struct
    {
        QString values;
        QString line;
    } const cases[] = {
        {u"Identifier=Family 6\n~MHz=dword:2649"_s, u"Host CPU: Family 6, ~2600MHz"_s},
        {u"VendorIdentifier=Maker\n~MHz=dword:2650"_s, u"Host CPU: Maker, Family 6, ~2700MHz"_s},
        {u"VendorIdentifier=dword:7\n~MHz=text"_s, u"Host CPU: Family 6, ~0MHz"_s},
        {u"~MHz=dword:0\nProcessorNameString="_s, u"Host CPU: . . . (Family 6, ~0MHz)"_s},
    };
    for (const auto& row : cases) {
        m_machine.fakeRegistry.load(u"[%1]\n%2\n"_s.arg(Processor, row.values));
        EXPECT_EQ(processorLine(), row.line);
    }
    // The speed's key is opened level by level, the description's in one step.
    m_machine.fakeRegistry.load(u"[%1]\n~MHz=dword:2649\n"_s.arg(Processor));
    m_machine.fakeRegistry.refuse(u"HARDWARE\\DESCRIPTION"_s, key_access::SetValue);
    EXPECT_EQ(processorLine(), u"Host CPU: . . . (Family 6, ~0MHz)"_s);
}

TEST_F(HardwareSectionsTest, TakeTheProcessorFromTheSystemWithoutTheRegistry)
{
    struct
    {
        ProcessorInfo processors;
        QStringView text;
    } const cases[] = {
        {{1, 0, 4, 0x1A}, u"detected Intel(R) 80486, Revision 001A"},
        {{1, 0, 6, 0x5507}, u"detected Intel(R) Pentium(R), Family 6, Model 85, Stepping 7"},
        {{1, 1, 0, 0}, u"detected MIPS"},
        {{1, 2, 0, 0}, u"detected Alpha/AXP"},
        {{1, 3, 0, 0}, u"detected PowerPC"},
        {{1, 6, 0, 0}, u"detected Intel/IA64"},
        {{1, 9, 6, 0x5507}, u"unknown or AMD"},
    };
    for (const auto& row : cases) {
        m_machine.fakeSystemInfo.processorInfo = row.processors;
        EXPECT_EQ(processorLine(), u"Host CPU: "_s + row.text.toString());
    }
}

TEST(OperatingSystem, IsNamedByItsVersion)
{
    struct
    {
        quint32 platform, major, minor;
        quint8 product;
        quint16 suite, architecture;
        quint32 edition;
        QStringView name; ///< "~" stands for service pack and build
        bool isR2 = false;
        QString servicePack = {};
    } const cases[] = {
        {2, 6, 1, 1, 0, 9, 1, u"Microsoft Windows 7~", false, u"Service Pack 1"_s},
        {2, 6, 1, 2, 0, 9, 7, u"Microsoft Windows Server 2008 R2~"},
        {2, 6, 0, 1, 0, 9, 1, u"Microsoft Windows Vista Ultimate Edition, 64-bit~"},
        {2, 6, 0, 1, 0, 0, 5, u"Microsoft Windows Vista, 32-bit~"},
        {2, 6, 0, 1, 0, 6, 11, u"Microsoft Windows Vista Starter Edition~"},
        {2, 6, 0, 3, 0, 0, 16, u"Microsoft Windows Server 2008, 32-bit~"},
        {2, 6, 0, 3, 0, 6, 15,
            u"Microsoft Windows Server 2008 Enterprise Edition for Itanium-based Systems~"},
        {2, 6, 0, 3, 0, 9, 25,
            u"Microsoft Windows Server 2008 Small Business Server Premium Edition, 64-bit~"},
        {2, 5, 2, 3, 0, 0, 0, u"Microsoft Windows Server 2003 R2, Standard Edition~", true},
        {2, 5, 2, 1, 8192, 9, 0, u"Microsoft Windows Server 2003 R2~", true},
        {2, 5, 2, 3, 8192, 9, 0, u"Microsoft Windows Storage Server 2003, Standard x64 Edition~"},
        {2, 5, 2, 3, 8194, 9, 0, u"Microsoft Windows Server 2003, Enterprise x64 Edition~"},
        {2, 5, 2, 1, 0, 9, 0, u"Microsoft Windows XP, Professional x64 Edition~"},
        {2, 5, 2, 1, 128, 0, 0, u"Microsoft Windows Server 2003~"},
        {2, 5, 2, 2, 130, 9, 0, u"Microsoft Windows Server 2003, Datacenter x64 Edition~"},
        {2, 5, 2, 3, 130, 6, 0,
            u"Microsoft Windows Server 2003, Datacenter Edition for Itanium-based Systems~"},
        {2, 5, 2, 3, 2, 6, 0,
            u"Microsoft Windows Server 2003, Enterprise Edition for Itanium-based Systems~"},
        {2, 5, 2, 3, 1024, 6, 0, u"Microsoft Windows Server 2003~"},
        {2, 5, 2, 3, 0x4482, 0, 0, u"Microsoft Windows Server 2003, Compute Cluster Edition~"},
        {2, 5, 2, 3, 0x0482, 0, 0, u"Microsoft Windows Server 2003, Datacenter Edition~"},
        {2, 5, 2, 3, 0x0402, 0, 0, u"Microsoft Windows Server 2003, Enterprise Edition~"},
        {2, 5, 2, 3, 0x0400, 5, 0, u"Microsoft Windows Server 2003, Web Edition~"},
        {2, 5, 1, 1, 512, 0, 0, u"Microsoft Windows XP Home Edition~"},
        {2, 5, 1, 1, 256, 0, 0, u"Microsoft Windows XP Professional~"},
        {2, 5, 0, 1, 128, 0, 0, u"Microsoft Windows 2000 Professional~"},
        {2, 5, 0, 3, 130, 0, 0, u"Microsoft Windows 2000 Datacenter Server~"},
        {2, 5, 0, 3, 2, 0, 0, u"Microsoft Windows 2000 Advanced Server~"},
        {2, 5, 0, 2, 1, 0, 0, u"Microsoft Windows 2000 Server~"},
        {2, 6, 2, 1, 0, 9, 1, u"Microsoft ~"},
        {2, 10, 0, 3, 0, 9, 7, u"Microsoft ~"},
        {2, 4, 0, 1, 0, 0, 0, u"Microsoct Unknown"},
        {3, 6, 1, 1, 0, 9, 0, u"Microsoct Unknown"},
        {0, 3, 1, 0, 0, 0, 0, u"Microsoft Win32s"},
        {1, 4, 0, 0, 0, 0, 0, u"Microsoft Windows 95", false, u"B"_s},
        {1, 4, 0, 0, 0, 0, 0, u"Microsoft Windows 95 OSR2", false, u" B"_s},
        {1, 4, 0, 0, 0, 0, 0, u"Microsoft Windows 95 OSR2", false, u" C"_s},
        {1, 4, 10, 0, 0, 0, 0, u"Microsoft Windows 98", false, u" B"_s},
        {1, 4, 10, 0, 0, 0, 0, u"Microsoft Windows 98 SE", false, u" A "_s},
        {1, 4, 90, 0, 0, 0, 0, u"Microsoft Windows Millennium Edition", false, u" A"_s},
        {1, 3, 90, 0, 0, 0, 0, u""},
        {1, 4, 20, 0, 0, 0, 0, u""},
    };
    for (const auto& row : cases) {
        const SystemVersion version{row.platform, row.major, row.minor, 99, row.servicePack, row.product,
            row.suite, row.isR2, row.architecture, row.edition};
        const QString tail = u", "_s + row.servicePack + u" (Build 99)"_s;
        EXPECT_EQ(DescribeOperatingSystem(version), row.name.toString().replace(u'~', tail));
    }
    EXPECT_EQ(DescribeOperatingSystem(Error{}), u"Unknown Product");
}

TEST(OperatingSystem, KnowsItsEdition)
{
    const QStringView editions[] = {u"", u" Ultimate Edition", u" Home Basic Edition",
        u" Home Premium Edition", u" Enterprise Edition", u"", u" Business Edition", u" Standard Edition",
        u" Datacenter Edition", u" Small Business Server", u" Enterprise Edition", u" Starter Edition",
        u" Datacenter Edition (core installation)", u" Standard Edition (core installation)",
        u" Enterprise Edition (core installation)", u" Enterprise Edition for Itanium-based Systems", u"",
        u" Web Server Edition", u" Cluster Server Edition", u""};
    for (quint32 edition = 0; edition < std::size(editions); ++edition) {
        EXPECT_EQ(
            DescribeOperatingSystem(SystemVersion{.major = 6, .servicePack = {}, .productInfo = edition}),
            u"Microsoft Windows Vista%1,  (Build 0)"_s.arg(editions[edition]));
    }
}

TEST_F(HardwareSectionsTest, ListExecutablesAndDrivers)
{
    auto& files = m_machine.fakeFiles;
    for (const QStringView name : {u"a.dll", u"b.exe", u"a.exe", u"c.exe", u"readme.txt", u"sub\\d.exe"})
        files.put(u"c:\\emu\\"_s + name.toString(), {});
    files.fileVersions = {{u"c:\\emu\\b.exe"_s, u"V 1.2.3.4 beta"_s}, {u"c:\\emu\\a.dll"_s, u"7"_s},
        {u"c:\\windows\\drivers\\p.sys"_s, u"4.3.2.1 beta"_s},
        {u"c:\\windows\\drivers\\m.sys"_s, u"V 9.9.9.9"_s}};
    const QString services = u"SYSTEM\\CurrentControlSet\\Services\\"_s;
    m_machine.fakeRegistry.load(
        u"[%1Packet]\nImagePath=drivers\\p.sys\n[%1MUXP]\nImagePath=C:\\windows\\drivers\\m.sys\n"_s.arg(
            services));
    const QString end = u"-------------------- End of Executable Description --------------------"_s;
    const QString zeros = u"[major.minor.sub_minor.build] [0.0.0.0] "_s;
    const QString numbers = u"[major.minor.sub_minor.build] [1.2.3.4] "_s;
    QStringList wanted{u"-------------------- QUORIL GUI Executable Description --------------------"_s, end,
        {}, u"-------------------- QUORIL Executable Description --------------------"_s,
        u"Executable: C:\\emu\\a.exe \"\""_s, zeros, {}, u"Executable: C:\\emu\\b.exe \"V 1.2.3.4 beta\""_s,
        numbers, {}, u"Executable: C:\\emu\\c.exe \"V 1.2.3.4 beta\""_s, numbers, {},
        u"Executable: C:\\emu\\a.dll \"7\""_s, u"[major.minor.sub_minor.build] [7.0.0.0] "_s, {}, end, {},
        u"-------------------- QUORIL DRIVERS --------------------"_s,
        u"NDIS driver version: [major.minor.sub_minor.build] [4.3.2.1] "_s, {},
        u"MUX driver version: [major.minor.sub_minor.build] [4.3.2.1] "_s, {},
        u"-------------------- End of DRIVERS Description --------------------"_s, {}};
    const HardwareSections sections{true, u"\"C:\\emu\\quoril.exe\""_s, {}};
    EXPECT_EQ(written(sections).first(wanted.size()), wanted);

    // The text of a driver's version is read from its first character on.
    m_machine.fakeRegistry.load(u"[%1MUXP]\nImagePath=drivers\\m.sys\n"_s.arg(services));
    wanted[21].replace(u"4.3.2.1"_s, u"0.0.0.0"_s);
    EXPECT_EQ(written(sections).first(wanted.size()), wanted);
}

} // namespace
} // namespace quoril::test
