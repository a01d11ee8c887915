#include "config/device_scan.h"

#include "config/configuration_table.h"
#include "report/problem_report.h"
#include "services/service_info.h"
#include "support/fake_machine.h"

namespace quoril::test {
namespace {

class DeviceScan : public testing::Test
{
protected:
    ServiceInfo scan(const QString& lines)
    {
        fake.fakeRegistry.load(u"[P]\n"_s + lines);
        ServiceInfo service;
        const RegistryKeyHandle parameters = fake.fakeRegistry.key(u"P");
        ScanDevices(*parameters, service);
        fillFixedDevices(*parameters, service);
        return service;
    }

    FakeMachine fake;
};

QString unit(const QString& component, int index, const QString& value)
{
    return u"[P\\%1\\container\\%2]\nClass=c%2\nValue=%3\n"_s.arg(component, QString::number(index), value);
}

QStringList rowsOf(const ServiceInfo& service)
{
    const PanelTable table = buildConfigurationTable(service);
    QStringList rows;
    for (qsizetype row = 0; row < table.rowCount(); ++row) {
        EXPECT_EQ(table.colour(row), 0xE6FFFFu);
        rows.append(table.text(row, 0) + u'|' + table.text(row, 1) + table.text(row, 2));
    }
    return rows;
}

TEST_F(DeviceScan, FindsTheDevicesThatHaveUnits)
{
    const ServiceInfo service = scan(u"[P\\noClass]\n"_s + unit(u"noClass"_s, 0, u"v"_s)
        + u"[P\\noUnit]\nClass=c\n[P\\noUnit\\container\\0]\nClass=only\n"_s + u"[P\\longClass]\nClass="_s
        + QString(255, u'x') + u'\n' + unit(u"longClass"_s, 0, u"v"_s) + u"[P\\PKA_0]\nClass=known\n"_s
        + unit(u"PKA_0"_s, 0, u"v"_s) + u"[P\\p\u212Aa_0]\nClass=net\n[P\\p\u212Aa_0\\container\\"_s
        + QString(1024, u'n') + u"]\n"_s + unit(u"p\u212Aa_0"_s, 2, u"two"_s)
        + unit(u"p\u212Aa_0"_s, 0, u"zero"_s) + u"[P\\p\u212Aa_0\\container\\1]\nClass=only\n"_s
        + unit(u"p\u212Aa_0"_s, 128, u"unseen"_s));
    ASSERT_EQ(service.m_devices->size(), 1u);
    const QRAPI_Device& device = service.m_devices->front();
    EXPECT_TRUE(device.Present);
    EXPECT_EQ(device.Class, u"net"_s);
    EXPECT_EQ(device.Units[0].Value, u"zero"_s);
    EXPECT_FALSE(device.Units[1].Present);
    EXPECT_EQ(device.Units[1].LineNo, -1);
    EXPECT_EQ(device.Units[1].Class, u"only"_s);
    EXPECT_TRUE(device.Units[2].Present);
    EXPECT_EQ(device.Units[2].LineNo, 2);
    EXPECT_FALSE(device.Units[3].Present);
    EXPECT_EQ(fake.calls.open(), 0);
}

TEST_F(DeviceScan, FillsTheFixedTablesAndTheirRows)
{
    QString lines = u"[P\\pka_0]\nClass=virtual_scsi_disk\n"_s + unit(u"pka_0"_s, 0, u"a"_s)
        + unit(u"pka_0"_s, 5, u"b"_s)
        + u"[P\\pka_1]\nClass=hsd50\n[P\\PKB_0]\nClass=own\n[P\\pkb_2]\nClass=floppy_scsi_device\n"_s;
    for (int index = 0; index < 20; index += 2)
        lines += unit(u"pkb_2"_s, 100 + index, QString::number(index));
    lines += u"[P\\dua]\nClass=c\n"_s + unit(u"dua"_s, 7, u"d"_s) + unit(u"dua"_s, 8, u"unseen"_s)
        + u"[P\\dub]\nClass=c\n[P\\pua\\container]\n[P\\pub]\nClass=c\n"_s + unit(u"pub"_s, 1, u"e"_s);
    QStringList expected{u"Emulation type|"_s, u"Home directory|"_s,
        u"SCSI device (virtual SCSI disk):  DKA0|a"_s, u"SCSI device (virtual SCSI disk):  DKA005|b"_s,
        u"SCSI device (hsd50):  DKA100|"_s, u"SCSI device (own):  DKB0|"_s};
    for (int index = 0; index < 16; index += 2)
        expected.append(u"SCSI device (SCSI floppy):  DKB2%1|%2"_s.arg(100 + index).arg(index));
    expected += {u"MSCP device DUA7|d"_s, u"Device PUB1|e"_s};
    EXPECT_EQ(rowsOf(scan(lines)), expected);
}

TEST_F(DeviceScan, ShowsAClassByItsText)
{
    const std::pair<const char*, const char*> cases[] = {
        {"Class=virtual_scsi_disk", "virtual SCSI disk"},
        {"Class=physical_scsi_device", "physical SCSI disk"},
        {"Class=floppy_scsi_device", "SCSI floppy"},
        {"Class=hsd50", "hsd50"},
        {"Class=hsj50", "hsj50"},
        {"Class=kdb50", "kdb50"},
        {"Class=kdm70", "kdm70"},
        {"Class=VIRTUAL_SCSI_DISK", "VIRTUAL_SCSI_DISK"},
        {"", ""},
    };
    for (const auto& [value, shown] : cases) {
        fake.fakeRegistry.node(u"P\\pkb_7"_s).values.clear();
        EXPECT_EQ(rowsOf(scan(u"[P\\pkb_7]\n"_s + QLatin1StringView(value) + u'\n')).value(2),
            u"SCSI device (%1):  DKB700|"_s.arg(QLatin1StringView(shown)));
    }
}

TEST_F(DeviceScan, TriesEveryUnitWhereTheContainerCantBeListed)
{
    fake.fakeRegistry.load(
        u"[P\\net]\nClass=c\n"_s + unit(u"net"_s, 3, u"v"_s) + unit(u"net"_s, 127, u"w"_s));
    ServiceInfo service;
    const RegistryKeyHandle parameters = fake.fakeRegistry.key(u"P");
    // The name of the component, its key, its class and its container come before the first name in that.
    fake.calls.failAt(5);
    ScanDevices(*parameters, service);
    ASSERT_EQ(service.m_devices->size(), 1u);
    EXPECT_EQ(
        service.m_devices->front().Units[3].Value + service.m_devices->front().Units[127].Value, u"vw"_s);
}

TEST_F(DeviceScan, ShowsTheFixedSettingsThatAreSet)
{
    ServiceInfo service;
    EXPECT_EQ(rowsOf(service), QStringList({u"Emulation type|"_s, u"Home directory|"_s}));
    service.EmulationType = u"T"_s;
    service.HomeDir = u"C:\\h\\"_s;
    service.AceEnable = u"yes"_s;
    service.RamSize = u"64"_s;
    service.RomContainer = u"rom.bin"_s;
    service.ToyContainer = u"toy.bin"_s;
    EXPECT_EQ(rowsOf(service),
        QStringList({u"Emulation type|T"_s, u"Home directory|C:\\h\\"_s, u"Advanced CPU Emulation mode|yes"_s,
            u"RAM size|64"_s, u"ROM|rom.bin"_s, u"TOY|toy.bin"_s}));
    const PanelTable table = buildConfigurationTable(service);
    EXPECT_EQ(table.column(0).heading + u'|' + table.column(1).heading, u"Component|Value"_s);
    // The report has labels of its own.
    EXPECT_EQ(configSummary(service),
        u"\r\nEmulation type                           T\r\n"
        "Home directory                           C:\\h\\\r\n"
        "CPU (dynamic instruction translation)    yes\r\n"
        "RAM size                                 64\r\n"
        "ROM                                      rom.bin\r\n"
        "TOY                                      toy.bin\r\n\r\n\r\n"_s);
}

} // namespace
} // namespace quoril::test
