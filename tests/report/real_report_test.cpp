// The registry section over a real machine's hive, with an instance that a registry text brought in.

#include "formats/regf_hive.h"
#include "report/registry_section.h"
#include "report/report_text.h"
#include "services/service_walk.h"
#include "support/real_data.h"
#include "support/temporary_tree.h"

#include <gtest/gtest.h>

#include <QMap>

namespace quoril {
namespace {

using namespace Qt::StringLiterals;

constexpr auto Instance = R"([HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Services\Emulator]
"Group"="TargetPlatformEmulator"
"Resources"=hex(8):41,00,00,00
"Wide"=hex(b):ff,ff,ff,ff,01,00,00,00
[HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Services\Emulator\Parameters]
"TargetPlatformEmulator"="quoril_32"
)";

/// What a section over the key has to hold of each key and value but their data, by the hive itself.
void expect(const regf::Key& key, const QString& path, QStringList& lines, QMap<quint32, int>& types)
{
    const QStringList names = {u"REG_NONE"_s, u"REG_SZ"_s, u"REG_EXPAND_SZ"_s, u"REG_BINARY"_s,
        u"REG_DWORD"_s, u"REG_DWORD_BIG_ENDIAN"_s, u"REG_LINK"_s, u"REG_MULTI_SZ"_s, u"REG_RESOURCE_LIST"_s};
    lines.append(u"Registry key: "_s + path);
    for (const regf::Value& value : key.values()) {
        if (value.data.size() > 511)
            break;
        lines.append(u"\tName: "_s + value.name);
        lines.append(u"\tType: "_s + names.value(value.type, u"<UNKNOWN>"_s));
        ++types[value.type];
    }
    for (std::size_t i = 0; i < key.childCount(); ++i)
        expect(*key.childAt(i), path + u"->"_s + key.childAt(i)->name(), lines, types);
}

TEST(RealReport, PrintsEveryTypeOfValueThatOccurs)
{
    const QByteArray hive = test::realData(u"SYSTEM-clean"_s);
    if (hive.isEmpty())
        GTEST_SKIP() << "QUORIL_REAL_DATA is not set";
    const test::TemporaryTree tree;
    tree.write(u"Windows/System32/config/SYSTEM"_s, hive);
    TreeMachine machine(tree.root());
    const ScopedMachine inForce(machine);
    test::import(machine.registry(), Instance);

    test::CollectedText instance;
    writeInstanceKeys(**openServices(), u"Emulator"_s, instance);
    EXPECT_TRUE(instance.text.endsWith(
        u"\tName: Resources\r\n\tType: REG_RESOURCE_LIST\r\n\tData: A\r\n\r\n"
        "\tName: Wide\r\n\tType: <UNKNOWN>\r\n\tData: FFFFFFFF\r\n\r\n"
        "\r\nRegistry key: Emulator->Parameters\r\n"
        "\tName: TargetPlatformEmulator\r\n\tType: REG_SZ\r\n\tData: quoril_32\r\n\r\n"));

    // The whole control set, printed as if it were an instance.
    const auto written = regf::Hive::parse(tree.read(u"Windows/System32/config/SYSTEM"_s));
    QStringList expected;
    QMap<quint32, int> types;
    expect(*written->root().child(u"ControlSet001"), u"ControlSet001"_s, expected, types);
    test::CollectedText set;
    WriteRegistryKey(**test::keyAt(machine.registry(), u"SYSTEM"), u"ControlSet001", set);
    QStringList printed;
    for (const QString& line : set.text.split(u"\r\n"_s)) {
        if (line.startsWith(u"Registry key: ") || line.startsWith(u"\tName: ")
            || line.startsWith(u"\tType: "))
            printed.append(line);
    }
    EXPECT_GT(expected.size(), 10000);
    EXPECT_TRUE(printed == expected);
    for (const auto& [type, count] : types.asKeyValueRange())
        RecordProperty("values of type " + std::to_string(type), count);
}

} // namespace
} // namespace quoril
