#include "ctl/quorilctl_program.h"

namespace quoril::test {
namespace {

TEST_F(QuorilctlProgramTest, AMachineIsMadeExportedAndImportedOnce)
{
    const QString demo = m_folder.filePath(u"demo"_s);
    const QString file = m_folder.filePath(u"ceres.reg"_s);
    const QString key = u"HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Services\\CERES"_s;
    EXPECT_EQ(run({u"list"_s}).errors,
        "The machine \"" + demo.toUtf8()
            + "\" can't be opened. Reason: The system cannot find the path specified. (0x3)\n");
    EXPECT_EQ(run({u"machine"_s, u"create"_s, demo}).code, 0);
    EXPECT_EQ(run({u"machine"_s, u"create"_s, demo}).code, 1);
    EXPECT_EQ(run({u"machine"_s, u"export"_s, key, u"-o"_s, file}).code, 0);
    const QByteArray exported = run({u"machine"_s, u"export"_s, key}).output;
    EXPECT_TRUE(exported.startsWith("Windows Registry Editor Version 5.00\n\n[" + key.toUtf8() + "]\n"));
    EXPECT_EQ(run({u"remove"_s, u"--yes"_s, u"CERES"_s}).code, 0);
    EXPECT_EQ(run({u"machine"_s, u"export"_s, key}).code, 1);
    EXPECT_EQ(run({u"machine"_s, u"import"_s, file}).code, 0);
    EXPECT_EQ(run({u"machine"_s, u"export"_s, key}).output, exported);
}

} // namespace
} // namespace quoril::test
