// The catalogue of a real machine's hive, with instances that a registry text brought in.

#include "platform/tree/registry_text.h"
#include "platform/tree/tree_machine.h"
#include "shell/quoril_manager_doc.h"
#include "shell/service_catalogue.h"
#include "support/real_data.h"
#include "support/temporary_tree.h"

#include <QRegularExpression>
#include <QStandardPaths>

namespace quoril::test {
namespace {

constexpr QStringView Instances = uR"(Windows Registry Editor Version 5.00

[HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Services\AAA Emulator]
"Group"="TargetPlatformEmulator"
"DisplayName"="First"
[HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Services\AAA Emulator\Parameters]
"TargetPlatformEmulator"="quoril_32"
"Home"="D:\\first"
[HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Services\zzz_Überwachung]
"Group"="TargetPlatformEmulator"
[HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Services\zzz_Überwachung\Parameters]
"TargetPlatformEmulator"="quoril_64"
)";

/// What another reader sees in the hive: every key and value, without places in the file and times of
/// writing.
QStringList seenByOracle(const QString& hive)
{
    static const QRegularExpression unstable(
        u"<mtime>[^<]*</mtime>|<byte_run[^>]*/>|<byte_runs>\\s*</byte_runs>"_s);
    QString xml = QString::fromUtf8(outputOf(u"hivexml"_s, {hive}));
    xml.remove(unstable);
    xml.replace(u"><"_s, u">\n<"_s);
    return xml.split(u'\n', Qt::SkipEmptyParts);
}

TEST(RealMachine, KeepsEverythingButWhatAnImportAsksFor)
{
    const QByteArray real = realData(u"SYSTEM-clean"_s);
    if (real.isEmpty())
        GTEST_SKIP() << "QUORIL_REAL_DATA is not set";
    if (QStandardPaths::findExecutable(u"hivexml"_s).isEmpty())
        GTEST_SKIP() << "hivexml is not installed";
    const TemporaryTree tree;
    tree.write(u"Windows/System32/config/SYSTEM"_s, real);
    const QString hive = tree.systemHive();
    const QStringList before = seenByOracle(hive);
    ASSERT_GT(before.size(), 10000);

    TreeMachine machine(tree.root());
    const ScopedMachine inForce(machine);
    CQuorilManagerDoc document;
    EXPECT_TRUE(ScanServices(document));
    EXPECT_TRUE(document.m_services.empty());
    ASSERT_TRUE(importRegistryText(machine.registry(), Instances.toUtf8()));
    EXPECT_TRUE(ScanServices(document));
    ASSERT_EQ(document.m_services.size(), 2U);
    EXPECT_EQ(document.m_services[0].Name + document.m_services[0].HomeDir, u"AAA EmulatorD:\\first\\"_s);
    EXPECT_EQ(document.m_services[1].Name, u"zzz_Überwachung"_s);

    // Taken away again, the hive holds for another reader what it held before, key by key and value by value.
    ASSERT_NE(seenByOracle(hive).size(), before.size());
    ASSERT_TRUE(importRegistryText(machine.registry(),
        "Windows Registry Editor Version 5.00\n\n"
        "[-HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Services\\AAA Emulator]\n"
        "[-HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Services\\zzz_\xC3\x9C"
        "berwachung]\n"));
    EXPECT_TRUE(seenByOracle(hive) == before);
}

} // namespace
} // namespace quoril::test
