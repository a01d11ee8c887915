
#include "support/service_tree.h"

namespace quoril::test {

namespace {

class EmulatorTest : public testing::Test
{
protected:
    /// The exit code of the emulator with these arguments, run in its own directory.
    quint32 run(const QString& arguments)
    {
        EXPECT_TRUE(tree.machine.files().setCurrentDirectory(u"C:\\Program Files\\Quoril"));
        const auto process
            = tree.machine.processes().create({}, ServiceTree::EmulatorPath + u' ' + arguments);
        return process && (*process)->wait(20000) ? *(*process)->exitCode() : StillActive;
    }
    void configure(const QByteArray& text) { tree.write(u"Program Files/Quoril/juno.cfg"_s, text); }
    QString parameter(const QString& below, QStringView name)
    {
        const auto key = keyAt(
            tree.machine.registry(), u"SYSTEM\\CurrentControlSet\\Services\\JUNO\\Parameters"_s + below);
        return key ? *(*key)->text(name, 512) : QString();
    }

    ServiceTree tree;
};

TEST_F(EmulatorTest, RegistersItselfWithAllValues)
{
    configure("# an instance\r\ntype = quoril_64\r\nhome = C:\\Emulators\r\nstart = automatic\r\n"
              "depends = Tcpip, CERES\r\ndisplay-name = \"Juno: training\"\r\noptions = --stop-delay 10\r\n"
              "session.log = juno.log\r\nram.size = 512\r\npka.class = virtual_scsi_disk\r\n"
              "pka.container = C:\\disks\\a=b.vdisk\r\n");
    EXPECT_EQ(run(u"--install JUNO juno.cfg"_s), 0xFFFFFFFFu);
    EXPECT_EQ(run(u"--install juno \"C:\\Program Files\\Quoril\\juno.cfg\""_s), error::ServiceExists);
    const auto service = *tree.open(u"JUNO"_s);
    const auto config = service->queryConfig(8192);
    ASSERT_TRUE(config);
    EXPECT_EQ(config->loadOrderGroup, u"TargetPlatformEmulator");
    EXPECT_EQ(config->startType, start_type::Automatic);
    EXPECT_EQ(config->dependencies, QStringList({u"Tcpip"_s, u"CERES"_s}));
    EXPECT_EQ(config->displayName, u"Juno: training");
    EXPECT_EQ(config->binaryPath, ServiceTree::EmulatorPath + u" --stop-delay 10"_s);
    EXPECT_EQ(parameter({}, u"TargetPlatformEmulator"), u"quoril_64");
    EXPECT_EQ(parameter({}, u"Home"), u"C:\\Emulators");
    EXPECT_EQ(parameter(u"\\session\\log\\0"_s, u"Value"), u"juno.log");
    EXPECT_EQ(parameter(u"\\ram"_s, u"Class"), u"ram");
    EXPECT_EQ(parameter(u"\\pka"_s, u"Class"), u"virtual_scsi_disk");
    EXPECT_EQ(parameter(u"\\pka\\container\\0"_s, u"Value"), u"C:\\disks\\a=b.vdisk");

    // What it registered is what it runs with, and each start marks the log anew.
    for (const QString& needed : config->dependencies)
        tree.add(needed);
    for (int starts = 1; starts <= 2; ++starts) {
        ASSERT_EQ(service->start().errorNumber(), 0u);
        tree.names = config->dependencies + QStringList(u"JUNO"_s);
        ASSERT_TRUE(tree.comesTo(*service, service_state::Running));
        QByteArray log = tree.read(u"Emulators/juno.log"_s);
        EXPECT_EQ(log.replace('\0', "").count(":INFO :  00000249"), starts);
        ASSERT_TRUE(service->control(ServiceControlStop));
        ASSERT_TRUE(tree.comesTo(*service, service_state::Stopped));
    }
}

TEST_F(EmulatorTest, RegistersNothingWhenItFails)
{
    configure("no setting at all\r\n");
    EXPECT_EQ(run(u"--install JUNO juno.cfg"_s), error::InvalidParameter);
    EXPECT_EQ(run(u"--install JUNO missing.cfg"_s), error::FileNotFound);
    EXPECT_EQ(run(u"--install JUNO"_s), error::InvalidParameter);
    configure("type = quoril_32\r\na\\b.c = 1\r\n");
    EXPECT_EQ(run(u"--install JUNO juno.cfg"_s), error::InvalidParameter) << "a component with a separator";
    EXPECT_EQ(tree.open(u"JUNO"_s).errorNumber(), error::ServiceDoesNotExist);
    configure("type = quoril_32\r\n");
    EXPECT_EQ(run(u"--install bad/name juno.cfg"_s), error::InvalidName);
    EXPECT_EQ(run(u"--install \"\" juno.cfg"_s), error::InvalidName);
    EXPECT_EQ(run(u"--install "_s + QString(32'000, u'n') + u" juno.cfg"_s), error::InvalidName);
    EXPECT_EQ(tree.open(u"bad"_s).errorNumber(), error::ServiceDoesNotExist);
}

} // namespace

} // namespace quoril::test
