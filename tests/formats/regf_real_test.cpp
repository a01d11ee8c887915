// Hives written by real machines, read, written again and compared, also by another reader of the format.

#include "formats/regf_hive.h"
#include "formats/regf_recovery.h"
#include "support/real_data.h"

#include <QRegularExpression>

namespace quoril::test {

namespace {

/// Compares two keys with all below them; stops at the first difference.
bool sameTree(const regf::Key& left, const regf::Key& right)
{
    const bool same = left.name() == right.name() && left.className() == right.className()
        && left.timestamp() == right.timestamp() && left.flags() == right.flags()
        && left.header().userFlags == right.header().userFlags
        && left.header().access == right.header().access && left.security() == right.security()
        && left.values() == right.values() && left.childCount() == right.childCount();
    for (std::size_t i = 0; same && i < left.childCount(); ++i) {
        if (!sameTree(*left.childAt(i), *right.childAt(i)))
            return false;
    }
    EXPECT_TRUE(same) << left.name();
    return same;
}

/// Key by key and value by value, without where in the file a thing lies: that is free to change.
QByteArray hivexml(const QByteArray& hive)
{
    static const QRegularExpression place(u"<byte_run[^>]*>"_s);
    return QString::fromUtf8(outputOf(u"hivexml"_s, {}, hive)).remove(place).toUtf8();
}

} // namespace

TEST(RealHive, IsTheSameAfterARewrite)
{
    const struct
    {
        QString file;
        bool clean;
        std::size_t services; ///< as counted by other readers
    } cases[] = {{u"SYSTEM-clean"_s, true, 467}, {u"SYSTEM-dirty"_s, false, 469}};
    for (const auto& [file, clean, count] : cases) {
        const QByteArray bytes = realData(file);
        if (bytes.isEmpty())
            GTEST_SKIP() << "QUORIL_REAL_DATA is not set";
        const Result<regf::Hive> hive = regf::Hive::parse(bytes);
        ASSERT_TRUE(hive) << hive.failure().detail;
        EXPECT_EQ(hive->notShutDownCleanly(), !clean);
        const regf::Key* services = hive->root().find(u"controlset001\\SERVICES");
        ASSERT_TRUE(services);
        EXPECT_EQ(services->childCount(), count);

        const Result<QByteArray> written = hive->serialize(hive->lastWritten());
        ASSERT_TRUE(written) << hive->problems().join(u'\n');
        const Result<regf::Hive> again = regf::Hive::parse(*written);
        ASSERT_TRUE(again);
        EXPECT_FALSE(again->notShutDownCleanly());
        EXPECT_TRUE(sameTree(hive->root(), again->root()));
        // Nothing where hivexml is missing or can't read the original.
        const QByteArray before = hivexml(bytes);
        EXPECT_TRUE(before.isEmpty() || hivexml(*written) == before);
    }
}

namespace {

struct News
{
    std::size_t keys = 0;
    std::size_t values = 0;
};

/// What stands below `after` and not below `before`; a new key's values count as new, too, but not on their
/// own.
void count(const regf::Key& after, const regf::Key* before, News& news)
{
    news.keys += !before;
    for (const regf::Value& value : after.values())
        news.values += before && !before->value(value.name);
    for (std::size_t i = 0; i < after.childCount(); ++i) {
        const regf::Key& child = *after.childAt(i);
        count(child, before ? before->child(child.name()) : nullptr, news);
    }
}

} // namespace

TEST(RealHive, IsAsNewAsItsLogs)
{
    const struct
    {
        QString name;
        std::size_t pages, keys, values;
    } hives[] = {{u"NTUSER-dirty"_s, 132, 521, 57}, {u"UsrClass-dirty"_s, 158, 33, 40}};
    for (const auto& [name, pages, keys, values] : hives) {
        const QByteArray bytes = realData(name);
        const QByteArray first = realData(name + u".LOG1"_s);
        const QByteArray second = realData(name + u".LOG2"_s);
        if (bytes.isEmpty())
            GTEST_SKIP() << "QUORIL_REAL_DATA is not set";
        for (const bool swapped : {false, true}) {
            const std::array<regf::Recovery::NamedLog, 2> logs
                = {{{u"LOG1"_s, swapped ? second : first}, {u"LOG2"_s, swapped ? first : second}}};
            regf::Recovery recovery(bytes, logs);
            ASSERT_TRUE(recovery.isRecovered()) << recovery.summary();
            QByteArray image = bytes;
            image.resize(qsizetype(recovery.size()), '\0');
            recovery.apply({image.data(), std::size_t(image.size())});
            EXPECT_EQ(recovery.uses()[0].pages + recovery.uses()[1].pages, pages);
            const Result<regf::Hive> before = regf::Hive::parse(bytes);
            const Result<regf::Hive> after = regf::Hive::parse(image);
            ASSERT_TRUE(before && after);
            EXPECT_TRUE(after->rewritable()) << after->problems().join(u'\n');
            News news;
            count(after->root(), &before->root(), news);
            EXPECT_EQ(news.keys, keys);
            EXPECT_EQ(news.values, values);
        }
    }
}

} // namespace quoril::test
