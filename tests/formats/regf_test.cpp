#include "formats/regf_hive.h"
#include "formats/regf_image.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <chrono>
#include <functional>

namespace quoril::test {

namespace {

QByteArray pattern(qsizetype size)
{
    QByteArray data(size, '\0');
    for (qsizetype i = 0; i < size; ++i)
        data[i] = char(i * 31 + i / 251);
    return data;
}

/// All of a tree in words, one line for each key and value.
QString dump(const regf::Key& key, const QString& path = {})
{
    QString text = u"%1[%2 %3 %4 %5]\n"_s.arg(path, key.className())
                       .arg(key.timestamp())
                       .arg(key.flags())
                       .arg(QString::fromLatin1(key.security().toHex()));
    for (const regf::Value& value : key.values())
        text += u"%1=%2:%3:%4\n"_s.arg(value.name)
                    .arg(value.type)
                    .arg(value.flags)
                    .arg(QString::fromLatin1(value.data.toHex()));
    for (std::size_t i = 0; i < key.childCount(); ++i)
        text += dump(*key.childAt(i), path + u'\\' + key.childAt(i)->name());
    return text;
}

/// A hive with one of everything the format knows.
regf::Hive sampleHive()
{
    regf::Hive hive = regf::Hive::create(u"ROOT"_s, 5);
    regf::Key& root = hive.root();
    regf::Key* key = *root.addPath(u"Services\\Größe\\\u0416\u4E2D", 6);
    key->setClassName(u"a class"_s);
    key->setSecurity(QByteArray("\1\0\4\x80 another descriptor", 24));
    const QString odd = QString(u'a') + QChar(0) + QChar(0xD800);
    EXPECT_TRUE(key->addChild(odd, 7));
    EXPECT_TRUE(key->setValue(u"", 1, QByteArray(8, 'x'), 7));
    EXPECT_TRUE(key->setValue(odd, 0x20001, {}, 7));
    for (const qsizetype size : {1, 4, 5, 16344, 16345, 100000})
        EXPECT_TRUE(key->setValue(u"of %1"_s.arg(size), 3, pattern(size), 7));
    for (int i = 0; i < 1200; ++i)
        EXPECT_TRUE(root.addChild(u"Key%1"_s.arg((i * 7919) % 1200), 8));
    return hive;
}

quint32 numberAt(const QByteArray& bytes, qsizetype place)
{
    return qFromLittleEndian<quint32>(bytes.constData() + place);
}

void seal(QByteArray& bytes)
{
    qToLittleEndian(regf::baseChecksum(bytes), bytes.data() + regf::base::Checksum);
}

} // namespace

TEST(Regf, EverythingSurvivesARewriteInBothFormsOfBigData)
{
    const regf::Hive hive = sampleHive();
    const QString expected = dump(hive.root());
    QByteArray bytes = *hive.serialize(9);
    EXPECT_TRUE(bytes.contains("db"));
    for (const quint32 minor : {5U, 3U}) {
        qToLittleEndian(minor, bytes.data() + regf::base::MinorVersion);
        seal(bytes);
        const Result<regf::Hive> read = regf::Hive::parse(bytes);
        ASSERT_TRUE(read);
        EXPECT_EQ(dump(read->root()), expected);
        bytes = *read->serialize(10);
        const Result<regf::Hive> again = regf::Hive::parse(bytes);
        ASSERT_TRUE(again);
        EXPECT_EQ(dump(again->root()), expected);
        EXPECT_EQ(again->lastWritten(), 10U);
        EXPECT_EQ(numberAt(bytes, regf::base::MinorVersion), minor);
    }
    // The older form: the longest value in one cell, and the older kind of subkey list.
    EXPECT_TRUE(bytes.contains(pattern(100000)));
    EXPECT_TRUE(bytes.contains("lf"));
}

TEST(Regf, KeysStandInTheOrderOfTheirUpperCasedNames)
{
    regf::Hive hive = regf::Hive::create(u"R"_s);
    for (const QStringView name : {u"b", u"_", u"Z", u"[", u"A", u"\u00FC", u"AB", u"\u00DB"})
        ASSERT_TRUE(hive.root().addChild(name, 1));
    QString order;
    for (std::size_t i = 0; i < hive.root().childCount(); ++i)
        order += hive.root().childAt(i)->name() + u' ';
    EXPECT_EQ(order, u"A AB b Z [ _ \u00DB \u00FC ");
    EXPECT_EQ(hive.root().childAt(8), nullptr);
}

TEST(Regf, NamesMatchWithoutRegardToCaseAndKeepTheirSpelling)
{
    for (const int others : {0, 50}) { // without and with a map
        regf::Hive hive = regf::Hive::create(u"R"_s);
        regf::Key& root = hive.root();
        for (int i = 0; i < others; ++i) {
            ASSERT_TRUE(root.addChild(u"k%1"_s.arg(i), 1));
            ASSERT_TRUE(root.setValue(u"v%1"_s.arg(i), 1, {}, 1));
        }
        const Result<regf::Key*> key = root.addChild(u"Äpfel", 2);
        ASSERT_TRUE(key);
        EXPECT_EQ(root.child(u"äPFEL"), *key);
        EXPECT_EQ(*root.addChild(u"ÄPFEL", 3), *key);
        EXPECT_EQ(root.timestamp(), 2U);
        ASSERT_TRUE(root.setValue(u"Группа", 1, "a", 4));
        ASSERT_TRUE(root.setValue(u"гРУППА", 3, "b", 5));
        ASSERT_TRUE(root.value(u"ГРУППА"));
        EXPECT_EQ(*root.value(u"ГРУППА"), (regf::Value{u"Группа"_s, 3, "b", 0}));
        EXPECT_EQ(root.timestamp(), 5U);
        EXPECT_FALSE(root.removeChild(u"none", 6));
        EXPECT_FALSE(root.removeValue(u"none", 6));
        EXPECT_EQ(root.timestamp(), 5U);
        EXPECT_TRUE(root.removeChild(u"äpfel", 6));
        EXPECT_TRUE(root.removeValue(u"группа", 7));
        EXPECT_EQ(root.child(u"Äpfel"), nullptr);
        EXPECT_EQ(root.value(u"Группа"), nullptr);
        EXPECT_EQ(root.childCount(), std::size_t(others));
        EXPECT_EQ(root.timestamp(), 7U);
        if (others > 0) {
            EXPECT_TRUE(root.removeValue(u"V3", 8));
            EXPECT_EQ(root.value(u"V49")->name, u"v49");
        }
    }
}

TEST(Regf, RefusesWhatTheRegistryCannotHold)
{
    regf::Hive hive = regf::Hive::create(u"R"_s);
    regf::Key& root = hive.root();
    EXPECT_EQ(root.addChild(u"", 1).errorNumber(), error::InvalidParameter);
    EXPECT_EQ(root.addChild(u"a\\b", 1).errorNumber(), error::InvalidParameter);
    EXPECT_EQ(root.addChild(QString(256, u'x'), 1).errorNumber(), error::InvalidParameter);
    EXPECT_EQ(root.setValue(QString(16384, u'x'), 1, {}, 1).errorNumber(), error::InvalidParameter);
    EXPECT_TRUE(root.addPath(u"x\\"_s.repeated(512), 1));
    EXPECT_EQ(root.addPath(u"x\\"_s.repeated(513), 1).errorNumber(), error::InvalidParameter);
    EXPECT_TRUE(regf::Hive::parse(*hive.serialize(1))->rewritable());
}

TEST(Regf, DescriptorsAreSharedAndCounted)
{
    const QByteArray bytes = *sampleHive().serialize(1);
    // Every key has the root's descriptor but the two with the other one.
    EXPECT_EQ(bytes.count(QByteArray("sk\0\0", 4)), 2);
    const qsizetype cell = bytes.indexOf(QByteArray("sk\0\0", 4));
    EXPECT_EQ(numberAt(bytes, cell + 12), 1203U);
    const qsizetype next = qsizetype(regf::base::Size) + numberAt(bytes, cell + 4) + 4;
    EXPECT_EQ(bytes.mid(next, 2), "sk");
    EXPECT_EQ(numberAt(bytes, next + 12), 2U);
}

TEST(Regf, PlainAndIndexedListsAreRead)
{
    regf::Hive hive = regf::Hive::create(u"R"_s);
    for (const QStringView name : {u"a", u"b", u"c"})
        ASSERT_TRUE(hive.root().addChild(name, 1));
    QByteArray bytes = *hive.serialize(1);
    const qsizetype list = bytes.indexOf("lh");
    // Turn the hashed list into a plain one of the same keys.
    const std::array<quint32, 3> cells{
        numberAt(bytes, list + 4), numberAt(bytes, list + 12), numberAt(bytes, list + 20)};
    bytes.replace(list, 2, "li");
    for (qsizetype i = 0; i < 3; ++i)
        qToLittleEndian(cells[std::size_t(i)], bytes.data() + list + 4 + i * 4);
    const Result<regf::Hive> read = regf::Hive::parse(bytes);
    EXPECT_EQ(dump(read->root()), dump(hive.root()));
    EXPECT_TRUE(read->rewritable());
}

namespace {

/// Overwrites a number in the first cell with a signature.
std::function<void(QByteArray&)> put(const char* signature, qsizetype place, quint32 number)
{
    return [=](QByteArray& bytes) {
        const qsizetype cell = bytes.indexOf(signature, regf::base::Size + 32);
        qToLittleEndian(number, bytes.data() + cell + place);
    };
}

std::function<void(QByteArray&)> putBase(quint32 place, quint32 number, bool sealed = true)
{
    return [=](QByteArray& bytes) {
        qToLittleEndian(number, bytes.data() + place);
        if (sealed)
            seal(bytes);
    };
}

} // namespace

TEST(Regf, DamageIsAnErrorOrAReadableRestThatIsNeverWritten)
{
    const struct
    {
        const char* what;
        std::function<void(QByteArray&)> make;
        bool opens;
    } damages[] = {{"empty", [](QByteArray& b) { b.clear(); }, false},
        {"cut in the base block", [](QByteArray& b) { b.truncate(4095); }, false},
        {"cut after the base block", [](QByteArray& b) { b.truncate(4096); }, false},
        {"cut in the middle", [](QByteArray& b) { b.truncate(b.size() / 2); }, true},
        {"magic", putBase(0, 1), false}, {"checksum", putBase(100, 1, false), false},
        {"version", putBase(regf::base::MajorVersion, 2), false},
        {"root beyond the end", putBase(regf::base::RootCell, 0x7FFFFFF8), false},
        {"root at an odd place", putBase(regf::base::RootCell, 0x21), false},
        {"data length", putBase(regf::base::DataLength, 0xFFFFFFFF), true},
        {"subkey count", put("nk", 20, 0xFFFFFFFF), true},
        {"subkey list is the root", put("nk", 28, 0x20), true},
        {"value count", put("nk", 36, 0xFFFFFFFF), true}, {"security offset", put("nk", 44, 0x20), true},
        {"list holds the root", put("lh", 4, 0x20), true}, {"list count", put("lh", 2, 0xFFFF), true},
        {"index entry", put("ri\3", 4, 8), true}, {"name size", put("nk", 72, 0xFFFF), false},
        {"value data size", put("vk", 4, 0x7FFFFFFF), true},
        {"inline data size", put("vk", 4, 0x80000005), true}, {"segment list", put("db", 4, 0x20), true},
        {"segment count", put("db", 2, 1), true}, {"cell size", put("vk", -4, 0x80000000), true},
        {"free cell", put("vk", -4, 32), true}};
    const QByteArray whole = *sampleHive().serialize(1);
    for (const auto& [what, make, opens] : damages) {
        SCOPED_TRACE(what);
        QByteArray bytes = whole;
        make(bytes);
        const Result<regf::Hive> hive = regf::Hive::parse(bytes);
        ASSERT_EQ(hive.ok(), opens);
        if (!hive) {
            EXPECT_EQ(hive.errorNumber(), error::RegistryCorrupt);
            EXPECT_FALSE(hive.failure().detail.isEmpty());
            continue;
        }
        (void)dump(hive->root());
        EXPECT_TRUE(hive->damaged());
        EXPECT_EQ(hive->serialize(2).errorNumber(), error::RegistryCorrupt);
    }
}

/// A key of the name k, its list of one subkey after it, as cells.
QByteArray keyAndList(quint32 list, quint32 subkey, quint32 count)
{
    QByteArray bytes(104, '\0');
    const auto number = [&](qsizetype at, quint32 value) { qToLittleEndian(value, bytes.data() + at); };
    number(0, quint32(-88));
    bytes.replace(4, 2, "nk");
    bytes[6] = 0x20;
    number(4 + 20, count);
    for (const qsizetype none : {32, 40, 44, 48})
        number(4 + none, 0xFFFFFFFF);
    number(4 + 28, list);
    bytes[4 + 72] = 1;
    bytes[4 + 76] = 'k';
    number(88, quint32(-16));
    bytes.replace(92, 4, QByteArray("li\1\0", 4));
    number(96, subkey);
    return bytes;
}

TEST(Regf, AHiveMadeToHurtIsReadInBoundedTimeAndDepth)
{
    constexpr quint32 Keys = 100'000;
    const auto hive = [](const std::function<quint32(quint32)>& subkeyOf, quint32 count) {
        QByteArray bytes = regf::Hive::create(u"R"_s).serialize(1)->first(regf::base::Size + 32);
        for (quint32 i = 0; i < Keys; ++i)
            bytes += keyAndList(32 + i * 104 + 88, 32 + subkeyOf(i) * 104, count);
        putBase(regf::base::DataLength, quint32(bytes.size()) - regf::base::Size)(bytes);
        putBase(regf::base::RootCell, 32)(bytes);
        return bytes;
    };
    const QByteArray hurting[]
        = {hive([](quint32 i) { return (i + 1) % Keys; }, 1), // deeper than any registry, and around
            hive([](quint32 i) { return i; }, 1), hive([](quint32) { return 7U; }, 0xFFFFFFFF)};
    for (const QByteArray& bytes : hurting) {
        const auto begin = std::chrono::steady_clock::now();
        const Result<regf::Hive> read = regf::Hive::parse(bytes);
        ASSERT_TRUE(read);
        int depth = 0;
        for (const regf::Key* key = &read->root(); key->childCount() > 0; key = key->childAt(0))
            ++depth;
        EXPECT_LE(depth, regf::Key::MaximumDepth);
        EXPECT_TRUE(read->damaged());
        EXPECT_EQ(read->serialize(2).errorNumber(), error::RegistryCorrupt);
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
    }
}

TEST(Regf, AnUncleanHiveIsReadAndSaysSo)
{
    QByteArray bytes = *sampleHive().serialize(1);
    EXPECT_FALSE(regf::Hive::parse(bytes)->notShutDownCleanly());
    putBase(regf::base::PrimarySequence, 77)(bytes);
    const Result<regf::Hive> hive = regf::Hive::parse(bytes);
    ASSERT_TRUE(hive);
    EXPECT_TRUE(hive->notShutDownCleanly());
    const QByteArray written = *hive->serialize(1);
    EXPECT_EQ(numberAt(written, regf::base::PrimarySequence), 78U);
    EXPECT_EQ(numberAt(written, regf::base::SecondarySequence), 78U);
}

} // namespace quoril::test
