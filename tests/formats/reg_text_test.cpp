#include "formats/reg_text.h"

#include "support/hive_sink.h"
#include "support/utf16.h"

namespace quoril::test {

using Kind = regtext::Operation::Kind;

namespace {

QByteArray document(QStringView lines)
{
    return units(u"\uFEFFWindows Registry Editor Version 5.00\r\n\r\n"_s + lines.toString());
}

} // namespace

TEST(RegText, IsReadInAllItsForms)
{
    const QString lines = u"; a remark\r\n[HKEY_LOCAL_MACHINE\\A [b]]\r\n"
                          "@=\"de\\\\fault \\\"x\\\"\"\r\n"
                          "  \"two\r\nlines\" = \"one\r\ntwo\" ; remark\r\n"
                          "\"d\"=dword:1F\r\n"
                          "\"h\"=hex:\r\n"
                          "\"b\"=HEX(B):01,2,\\\r\n  ff,\\ \r\n\t00\n"
                          "\"gone\"=-\r\n@=-\r\n\r\n"
                          "[-HKEY_LOCAL_MACHINE\\B]"_s;
    const QString key = u"HKEY_LOCAL_MACHINE\\A [b]"_s;
    const std::vector<regtext::Operation> expected{
        {Kind::CreateKey, key, {}, 0, {}, 4},
        {Kind::SetValue, key, {}, 1, units(QStringView(u"de\\fault \"x\"\0", 13)), 5},
        {Kind::SetValue, key, u"two\r\nlines"_s, 1, units(QStringView(u"one\r\ntwo\0", 9)), 6},
        {Kind::SetValue, key, u"d"_s, 4, QByteArray("\x1f\0\0\0", 4), 9},
        {Kind::SetValue, key, u"h"_s, 3, {}, 10},
        {Kind::SetValue, key, u"b"_s, 11, QByteArray("\1\2\xff\0", 4), 11},
        {Kind::DeleteValue, key, u"gone"_s, 0, {}, 14},
        {Kind::DeleteValue, key, {}, 0, {}, 15},
        {Kind::DeleteKey, u"HKEY_LOCAL_MACHINE\\B"_s, {}, 0, {}, 17},
    };
    const QByteArray wide = document(lines);
    const QByteArray narrow = (u"Windows Registry Editor Version 5.00\r\n\r\n"_s + lines).toUtf8();
    for (const QByteArray& bytes : {wide, narrow, "\xef\xbb\xbf" + narrow}) {
        const auto read = regtext::parse(bytes);
        ASSERT_TRUE(read) << read.failure().detail;
        EXPECT_EQ(*read, expected);
    }
}

TEST(RegText, FaultsNameTheirLine)
{
    struct Fault
    {
        QStringView lines; ///< from line 3 on
        QStringView start;
    };
    const Fault faults[] = {
        {u"\"a\"=\"b\"", u"line 3:"}, // before any key
        {u"[A]\r\n\"a\"\r\n", u"line 4:"},
        {u"[A]\r\n\r\n\"a\"=\"b", u"line 5:"},
        {u"[A]\r\n\"a\"=\"\\n\"", u"line 4:"},
        {u"[A\r\n", u"line 3:"},
        {u"[]\r\n", u"line 3:"},
        {u"[A] b\r\n", u"line 3:"},
        {u"[-A]\r\n@=\"\"", u"line 4:"},
        {u"[A]\r\n@=dword:\r\n", u"line 4:"},
        {u"[A]\r\n@=dword:123456789\r\n", u"line 4:"},
        {u"[A]\r\n@=hex:00,\\\r\n  0g\r\n", u"line 5:"},
        {u"[A]\r\n@=hex:00,\r\n", u"line 4:"},
        {u"[A]\r\n@=hex(x):00\r\n", u"line 4:"},
        {u"[A]\r\n@=word:00\r\n", u"line 4:"},
    };
    for (const Fault& fault : faults) {
        const auto read = regtext::parse(document(fault.lines));
        ASSERT_FALSE(read) << fault.lines;
        EXPECT_EQ(read.errorNumber(), error::BadDatabase);
        EXPECT_TRUE(read.failure().detail.startsWith(fault.start)) << read.failure().detail;
    }
    for (const char* bytes : {"", "REGEDIT4\r\n", "Windows Registry Editor Version 5.00x\r\n",
             "\xff\xfe"
             "W",
             "\x80"})
        EXPECT_FALSE(regtext::parse(QByteArray(bytes)));
}

TEST(RegText, IsWrittenAsTheEditorWritesIt)
{
    regf::Hive hive = regf::Hive::create(u"R"_s);
    regf::Key& root = hive.root();
    ASSERT_TRUE(root.setValue(u"", 1, units(QStringView(u"a\\b\"c\0", 6)), 1));
    ASSERT_TRUE(root.setValue(u"Start", 4, QByteArray("\3\0\0\0", 4), 1));
    ASSERT_TRUE(root.setValue(u"short", 4, "a", 1));
    ASSERT_TRUE(root.setValue(u"line", 1, units(QStringView(u"\n\0", 2)), 1));
    ASSERT_TRUE(root.setValue(u"bytes", 3, QByteArray(30, '\x5a'), 1));
    ASSERT_TRUE((*root.addChild(u"Sub", 1))->setValue(u"x", 0x20001, {}, 1));
    const QString bytes = u"5a,"_s.repeated(22) + u"\\\r\n  "_s + u"5a,"_s.repeated(7) + u"5a"_s;
    const QString expected
        = u"[HKLM\\R]\r\n@=\"a\\\\b\\\"c\"\r\n\"Start\"=dword:00000003\r\n\"short\"=hex(4):61\r\n"
          "\"line\"=hex(1):0a,00,00,00\r\n\"bytes\"=hex:%1\r\n\r\n"
          "[HKLM\\R\\Sub]\r\n\"x\"=hex(20001):\r\n\r\n"_s.arg(bytes);
    EXPECT_EQ(textOf(*regtext::write(root, u"HKLM\\R"_s)), textOf(document(expected)));
}

TEST(RegText, EveryTypeAndNameSurvivesTheWayThere)
{
    regf::Hive hive = regf::Hive::create(u"R"_s);
    regf::Key& key = **hive.root().addPath(u"R\\]odd[\\;\"key\"", 1);
    const QString names[] = {{}, u"@"_s, u"a\"b\\"_s, u"\\"_s, u"=;"_s, u"\u0416\U0001F600"_s};
    const QByteArray contents[] = {{}, "odd", units(u"no end"), units(QStringView(u"\0", 1)),
        units(QStringView(u"in\0side\0", 8)), QByteArray(300, '\xfe'), QByteArray("\0\xD8\0\0", 4)};
    quint32 type = 0;
    for (const QByteArray& content : contents) {
        for (const QString& name : names) {
            regf::Key& sub = **key.addChild(u"type %1"_s.arg(type, 0, 16), 1);
            ASSERT_TRUE(sub.setValue(name, type % 13 == 12 ? 0xFFFFFFFF : type % 13, content, 1));
            ++type;
        }
    }
    const QByteArray text = *regtext::write(*hive.root().child(u"R"), u"R"_s);
    const auto operations = regtext::parse(text);
    ASSERT_TRUE(operations) << operations.failure().detail;
    regf::Hive copy = regf::Hive::create(u"R"_s);
    HiveSink sink(copy.root());
    ASSERT_TRUE(regtext::apply(*operations, sink));
    const regf::Key* copied = copy.root().find(u"R\\]odd[\\;\"key\"");
    ASSERT_TRUE(copied);
    ASSERT_EQ(copied->childCount(), 42U);
    for (std::size_t i = 0; i < 42; ++i)
        EXPECT_EQ(copied->childAt(i)->values(), key.childAt(i)->values()) << i;
}

TEST(RegText, WhatATextCannotCarryIsRefused)
{
    const QString bad[]
        = {u"x]\r\n[-HKEY_LOCAL_MACHINESYSTEM"_s, u"a\nb"_s, QString(QChar(0)), QString(QChar(0xDC00))};
    for (const QString& name : bad) {
        regf::Hive keys = regf::Hive::create(u"R"_s);
        ASSERT_TRUE(keys.root().addPath(u"below\\"_s + name, 1));
        regf::Hive values = regf::Hive::create(u"R"_s);
        ASSERT_TRUE(values.root().setValue(name, 1, {}, 1));
        for (const regf::Key* root : {&keys.root(), &values.root(), keys.root().child(u"below")}) {
            const auto text = regtext::write(*root, u"R"_s);
            ASSERT_EQ(text.errorNumber(), error::BadDatabase);
            EXPECT_FALSE(text.failure().detail.contains(u'\n'));
        }
        EXPECT_FALSE(regtext::write(regf::Hive::create(u"R"_s).root(), name));
    }
    // Two keys and two values of one name, and a value that can't be read.
    regf::Hive hive = regf::Hive::create(u"R"_s);
    for (const QStringView name : {u"same1", u"same2"})
        ASSERT_TRUE(hive.root().addChild(name, 1));
    for (const QStringView name : {u"v1", u"v2"})
        ASSERT_TRUE(hive.root().setValue(name, 1, QByteArray(9, 'x'), 1));
    const QByteArray good = *hive.serialize(1);
    ASSERT_TRUE(regtext::write(regf::Hive::parse(good)->root(), u"R"_s));
    for (const auto& [from, to] :
        {std::pair("v1", "V2"), std::pair("vk", "xx"), std::pair("same1", "same2")}) {
        QByteArray bytes = good;
        bytes.replace(bytes.indexOf(from), qsizetype(std::strlen(from)), to);
        const Result<regf::Hive> read = regf::Hive::parse(bytes);
        ASSERT_TRUE(read);
        EXPECT_EQ(regtext::write(read->root(), u"R"_s).errorNumber(), error::BadDatabase) << to;
    }
}

TEST(RegText, IsAppliedInOrderUpToTheFirstRefusal)
{
    regf::Hive hive = regf::Hive::create(u"R"_s);
    HiveSink sink(hive.root());
    const auto operations = regtext::parse(
        document(u"[R\\a\\b]\r\n\"x\"=\"1\"\r\n\"y\"=\"2\"\r\n\"X\"=-\r\n[-R\\A\\B\\none]\r\n"
                 "[R\\gone]\r\n[-R\\gone]\r\n[R\\%1]\r\n[R\\later]\r\n"_s.arg(QString(256, u'x'))));
    ASSERT_TRUE(operations);
    const Status done = regtext::apply(*operations, sink);
    EXPECT_EQ(done.errorNumber(), error::InvalidParameter);
    EXPECT_TRUE(done.failure().detail.startsWith(u"line 10: "));
    ASSERT_EQ(hive.root().find(u"R\\a\\b")->values().size(), 1U);
    EXPECT_TRUE(hive.root().find(u"R\\a\\b")->value(u"y"));
    EXPECT_EQ(hive.root().child(u"R")->childCount(), 1U);
}

} // namespace quoril::test
