#include "platform/tree/tree_registry.h"

#include "platform/tree/hardware_hive.h"
#include "support/temporary_tree.h"
#include "support/utf16.h"

#include <chrono>

namespace quoril::test {

namespace {

constexpr auto controlSets = "[HKEY_LOCAL_MACHINE\\SYSTEM\\Select]\n\"Current\"=dword:00000002\n"
                             "[HKEY_LOCAL_MACHINE\\SYSTEM\\ControlSet001\\Services\\Old]\n"
                             "[HKEY_LOCAL_MACHINE\\SYSTEM\\ControlSet002\\Services\\Alpha]\n"
                             "\"Text\"=\"one\"\n"
                             "[HKEY_LOCAL_MACHINE\\SYSTEM\\ControlSet002\\Services\\Beta]\n";

QStringList subkeys(const RegistryKey& key)
{
    QStringList names;
    for (quint32 i = 0;; ++i) {
        const Result<QString> name = key.subkeyName(i, 1023);
        if (!name)
            return names;
        names.append(*name);
    }
}

class TreeRegistryTest : public testing::Test
{
protected:
    void SetUp() override { import(machine.registry(), controlSets); }

    TemporaryTree tree;
    TreeMachine machine{tree.root()};
    TreeRegistry& registry = machine.registry();
};

TEST_F(TreeRegistryTest, FollowsTheLinkToTheControlSetInForce)
{
    const auto system = keyAt(registry, u"system");
    ASSERT_TRUE(system);
    EXPECT_EQ(subkeys(**system),
        (QStringList{u"ControlSet001"_s, u"ControlSet002"_s, u"CurrentControlSet"_s, u"Select"_s}));
    EXPECT_EQ(subkeys(**keyAt(registry, u"SYSTEM\\CURRENTCONTROLSET\\services")),
        (QStringList{u"Alpha"_s, u"Beta"_s}));
    EXPECT_EQ((*system)->removeTree(u"CurrentControlSet").errorNumber(), error::AccessDenied);
    const quint32 notToDelete = key_access::AllAccess & ~key_access::Delete;
    EXPECT_EQ((*keyAt(registry, u"SYSTEM", notToDelete))->removeTree(u"ControlSet001").errorNumber(),
        error::AccessDenied);

    ASSERT_TRUE((*keyAt(registry, u"SYSTEM\\Select"))->setDWord(u"Current", 1));
    EXPECT_EQ(subkeys(**keyAt(registry, u"SYSTEM\\CurrentControlSet\\Services")), QStringList{u"Old"_s});
    ASSERT_TRUE((*keyAt(registry, u"SYSTEM\\Select"))->setDWord(u"Current", 7));
    EXPECT_EQ(keyAt(registry, u"SYSTEM\\CurrentControlSet").errorNumber(), error::FileNotFound);
    EXPECT_EQ(subkeys(**system).size(), 3);
}

TEST_F(TreeRegistryTest, KeepsOpenKeysOverChangesOfAnotherProgram)
{
    TreeMachine other(tree.root());
    const auto alpha = keyAt(registry, u"SYSTEM\\ControlSet002\\Services\\Alpha");
    const auto beta = keyAt(registry, u"SYSTEM\\ControlSet002\\Services\\Beta");
    ASSERT_TRUE(
        (*keyAt(other.registry(), u"SYSTEM\\ControlSet002\\Services\\Alpha"))->setText(u"Text", u"two"));
    ASSERT_TRUE((*keyAt(other.registry(), u"SYSTEM\\ControlSet002\\Services"))->removeTree(u"Beta"));

    EXPECT_TRUE(keyAt(registry, u"SYSTEM")); // an opening looks for a new file
    EXPECT_EQ(*(*alpha)->text(u"Text", 99), u"two");
    EXPECT_EQ((*beta)->valueName(0).errorNumber(), error::KeyDeleted);
    EXPECT_EQ((*beta)->setText(u"a", u"b").errorNumber(), error::KeyDeleted);

    // A change is made to the newest state, whatever was read before.
    ASSERT_TRUE(
        (*keyAt(other.registry(), u"SYSTEM\\ControlSet002\\Services\\Alpha"))->setText(u"Second", u"2"));
    ASSERT_TRUE((*alpha)->setText(u"Third", u"3"));
    EXPECT_EQ(*(*alpha)->text(u"Second", 99), u"2");
}

TEST_F(TreeRegistryTest, MakesARowOfChangesOneOrNone)
{
    const QByteArray before = tree.read(u"Windows/System32/config/SYSTEM"_s);
    {
        const auto transaction = registry.beginTransaction(u"SYSTEM");
        ASSERT_TRUE(transaction);
        ASSERT_TRUE((*keyAt(registry, u"SYSTEM\\ControlSet001"))->create(u"Half", key_access::Read));
        EXPECT_TRUE(keyAt(registry, u"SYSTEM\\ControlSet001\\Half"));
        EXPECT_EQ(tree.read(u"Windows/System32/config/SYSTEM"_s), before);
    }
    EXPECT_EQ(keyAt(registry, u"SYSTEM\\ControlSet001\\Half").errorNumber(), error::FileNotFound);

    const auto transaction = registry.beginTransaction(u"SYSTEM");
    const auto set = keyAt(registry, u"SYSTEM\\ControlSet001");
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE((*set)->create(u"Key%1"_s.arg(i), key_access::Read));
    ASSERT_TRUE((*transaction)->commit());
    TreeMachine other(tree.root());
    EXPECT_TRUE(keyAt(other.registry(), u"SYSTEM\\ControlSet001\\Key2"));
}

TEST_F(TreeRegistryTest, TakesAndGivesTheEditorsText)
{
    const auto text
        = exportRegistryText(registry, u"HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Services");
    ASSERT_TRUE(text);
    ASSERT_TRUE((*keyAt(registry, u"SYSTEM\\ControlSet002"))->removeTree(u"Services"));
    ASSERT_TRUE(importRegistryText(registry, *text));
    EXPECT_EQ(*exportRegistryText(registry, u"SYSTEM\\CurrentControlSet\\Services"), *text);

    const QByteArray head = "Windows Registry Editor Version 5.00\n";
    EXPECT_EQ(importRegistryText(registry, head + "[HKEY_LOCAL_MACHINE\\SYSTEM\\New]\n[HKEY_USERS\\x]\n")
                  .errorNumber(),
        error::FileNotFound);
    EXPECT_EQ(
        importRegistryText(registry, head + "[HKEY_LOCAL_MACHINE\\SYSTEM\\New]\n\"a\"=what\n").errorNumber(),
        error::BadDatabase);
    EXPECT_EQ(keyAt(registry, u"SYSTEM\\New").errorNumber(), error::FileNotFound);
}

TEST_F(TreeRegistryTest, RefusesATextMadeToHurtAndTakesNothingOfIt)
{
    const QByteArray before = tree.read(u"Windows/System32/config/SYSTEM"_s);
    const QByteArray head = "Windows Registry Editor Version 5.00\n[HKEY_LOCAL_MACHINE\\SYSTEM\\New]\n";
    const std::pair<QByteArray, quint32> cases[] = {
        {"[HKLM\\SYSTEM" + QByteArray("\\a").repeated(300'000) + "]\n", error::InvalidParameter},
        {"[HKLM\\SYSTEM\\" + QByteArray(5'000'000, 'n') + "]\n", error::InvalidParameter},
        {"\"" + QByteArray(100'000, 'n') + "\"=dword:1\n", error::InvalidParameter},
        {"\"a\"=hex:" + QByteArray("00,\\\n  ").repeated(500'000) + "xx\n", error::BadDatabase},
        {"\"a\"=\"" + QByteArray("\\\\").repeated(2'000'000), error::BadDatabase},
        {QByteArray("[").repeated(3'000'000), error::BadDatabase},
    };
    for (const auto& [text, number] : cases) {
        const auto begin = std::chrono::steady_clock::now();
        const Status taken = importRegistryText(registry, head + text);
        EXPECT_EQ(taken.errorNumber(), number) << text.left(20);
        EXPECT_TRUE(
            !taken && taken.failure().detail.size() < 10'000 && taken.failure().detail.startsWith(u"line "));
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
    }
    EXPECT_EQ(tree.read(u"Windows/System32/config/SYSTEM"_s), before);
}

TEST_F(TreeRegistryTest, KnowsTheProcessors)
{
    const auto first = keyAt(registry, u"HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0");
    ASSERT_TRUE(first);
    EXPECT_NE(*(*first)->text(u"ProcessorNameString", 999), QString());

    const regf::Hive hive
        = makeHardwareHive("processor\t: 0\nvendor_id\t: GenuineIntel\ncpu family\t: 6\n"
                           "model\t\t: 85\nmodel name\t: Some CPU\nstepping\t: 7\n"
                           "cpu MHz\t\t: 2499.998\n\nprocessor\t: 1\nmodel name\t: Other\n");
    const regf::Key* processors = hive.root().find(u"DESCRIPTION\\System\\CentralProcessor");
    ASSERT_TRUE(processors);
    EXPECT_EQ(processors->childCount(), 2u);
    EXPECT_EQ(processors->child(u"0")->value(u"~MHz")->data, QByteArray("\xc4\x09\0\0", 4));
    EXPECT_TRUE(textOf(processors->child(u"0")->value(u"Identifier")->data)
                    .endsWith(u" Family 6 Model 85 Stepping 7\0"_s));
    EXPECT_FALSE(processors->child(u"1")->value(u"~MHz"));
}

} // namespace

} // namespace quoril::test
