#include "platform/contract/contract_machine.h"

#include <QSet>

namespace quoril::test {

namespace {

class RegistryContract : public ContractTest
{
protected:
    RegistryContract()
    {
        const auto software
            = openPath(**machine.registry().localMachine(), u"software", key_access::AllAccess);
        m_parent = *(*software)->create(u"QuorilContract", key_access::AllAccess);
        key = *m_parent->create(u"Key", key_access::AllAccess);
    }
    ~RegistryContract() override
    {
        const auto software
            = openPath(**machine.registry().localMachine(), u"SOFTWARE", key_access::AllAccess);
        EXPECT_TRUE((*software)->removeTree(u"quorilcontract"));
    }

    RegistryKeyHandle with(quint32 access) { return *m_parent->open(u"KEY", access); }

    RegistryKeyHandle m_parent;
    RegistryKeyHandle key;
};

TEST_F(RegistryContract, GivesTextWhateverTheTypeUpToItsFirstZeroUnit)
{
    using namespace value_type;
    const auto bytes = [](const char* text, int size) { return QByteArray(text, size); };
    const std::pair<QStringView, RegistryValue> values[] = {
        {u"Text", {String, bytes("o\0n\0e\0\0", 8)}},
        {u"Cut", {Binary, bytes("A\0\0\0B\0", 6)}},
        {u"Odd", {Binary, bytes("A\0B\0C", 5)}},
        {u"None", {None, {}}},
        {u"Number", {DWord, bytes("\1\0\0\0", 4)}},
        {u"Own", {0x12345, bytes("x", 1)}},
        {u"", {String, bytes("d\0\0", 4)}},
    };
    for (const auto& [name, value] : values) {
        ASSERT_TRUE(key->setValue(name, value));
        const auto read = key->value(name, value.data.size());
        ASSERT_TRUE(read);
        EXPECT_EQ(read->type, value.type);
        EXPECT_EQ(read->data, value.data);
    }
    const struct
    {
        QStringView name;
        qsizetype limit;
        quint32 number;
        QStringView text;
    } cases[] = {
        {u"text", 8, 0, u"one"},
        {u"Text", 7, error::MoreData, u""},
        {u"Text", 0, error::MoreData, u""},
        {u"Cut", 6, 0, u"A"},
        {u"Odd", 5, 0, u"AB"},
        {u"None", 0, 0, u""},
        {u"Number", 1023, 0, u"\u0001"},
        {u"", 1023, 0, u"d"},
        {u"Missing", 1023, error::FileNotFound, u""},
    };
    for (const auto& each : cases) {
        const Result<QString> text = key->text(each.name, each.limit);
        EXPECT_EQ(text.errorNumber(), each.number) << each.name;
        EXPECT_EQ(text ? *text : QString(), each.text) << each.name;
    }
    const QString big(100000, u'b');
    ASSERT_TRUE(key->setText(u"Big", big));
    EXPECT_EQ(*key->text(u"Big", 200002), big);
    EXPECT_EQ(key->text(u"Big", 200001).errorNumber(), error::MoreData);
    ASSERT_TRUE(key->setMultiString(u"List", {u"a"_s, u"b c"_s}));
    EXPECT_EQ(*key->multiString(u"List", 14), (QStringList{u"a"_s, u"b c"_s}));
}

TEST_F(RegistryContract, ListsWhatThereIs)
{
    for (const QStringView name : {u"Alpha", u"Beta"})
        ASSERT_TRUE(key->create(name, key_access::Read));
    for (const QString& name : {u"first"_s, u"second"_s})
        ASSERT_TRUE(key->setText(name, u"x"));
    EXPECT_EQ(*key->subkeyName(0, 5), u"Alpha");
    EXPECT_EQ(*key->subkeyName(1, 4), u"Beta");
    EXPECT_EQ(key->subkeyName(1, 3).errorNumber(), error::MoreData);
    EXPECT_EQ(key->subkeyName(2, 1023).errorNumber(), error::NoMoreItems);
    // Wine gives the values sorted, Windows in the order of their making.
    EXPECT_EQ(
        (QSet<QString>{*key->valueName(0), *key->valueName(1)}), (QSet<QString>{u"first"_s, u"second"_s}));
    EXPECT_EQ(key->valueName(2).errorNumber(), error::NoMoreItems);

    EXPECT_TRUE(key->removeValue(u"FIRST"));
    EXPECT_EQ(key->removeValue(u"first").errorNumber(), error::FileNotFound);
    EXPECT_EQ(*key->valueName(0), u"second");
    ASSERT_TRUE((*key->open(u"alpha", key_access::AllAccess))->create(u"Below", key_access::Read));
    const auto gone = *key->open(u"Alpha", key_access::AllAccess);
    EXPECT_TRUE(key->removeTree(u"ALPHA"));
    EXPECT_EQ(gone->setText(u"a", u"b").errorNumber(), error::KeyDeleted);
    EXPECT_EQ(key->removeTree(u"Alpha").errorNumber(), error::FileNotFound);
    // A name is one level; none is no key.
    EXPECT_EQ(key->removeTree(u"").errorNumber(), error::FileNotFound);
    EXPECT_EQ(key->open(u"", key_access::Read).errorNumber(), error::FileNotFound);
    EXPECT_EQ(m_parent->open(u"Key\\Beta", key_access::Read).errorNumber(), error::FileNotFound);
    EXPECT_EQ(key->create(u"a\\b", key_access::Read).errorNumber(), error::InvalidParameter);
    EXPECT_EQ(*key->subkeyName(0, 9), u"Beta");
}

TEST_F(RegistryContract, AsksForTheRightOfEachOperation)
{
    using namespace key_access;
    const quint32 allBut = AllAccess & ~(QueryValue | SetValue | CreateSubKey | EnumerateSubKeys | Delete);
    const auto none = with(allBut);
    EXPECT_EQ(none->subkeyName(0, 99).errorNumber(), error::AccessDenied);
    EXPECT_EQ(none->valueName(0).errorNumber(), error::AccessDenied);
    EXPECT_EQ(none->value(u"x", 9).errorNumber(), error::AccessDenied);
    EXPECT_EQ(none->setText(u"x", u"y").errorNumber(), error::AccessDenied);
    EXPECT_EQ(none->removeValue(u"x").errorNumber(), error::AccessDenied);
    // Wine makes a key below any open one.
    if (!contract->isWine()) {
        EXPECT_EQ(none->create(u"New", Read).errorNumber(), error::AccessDenied);
    }
    EXPECT_TRUE(with(allBut | CreateSubKey)->create(u"New", Read));
    EXPECT_TRUE(none->create(u"New", Read));
    EXPECT_EQ(with(allBut | EnumerateSubKeys)->subkeyName(0, 99).errorNumber(), 0u);
    EXPECT_EQ(with(allBut | QueryValue)->value(u"x", 9).errorNumber(), error::FileNotFound);
    EXPECT_TRUE(with(allBut | SetValue)->setText(u"x", u"y"));
}

} // namespace

} // namespace quoril::test
