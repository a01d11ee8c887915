// Hives written by real machines, read, written again and compared, also by another reader of the format.

#include "formats/regf_hive.h"
#include "support/real_data.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

using namespace quoril;
using test::realData;
using namespace Qt::StringLiterals;

namespace {

struct Totals
{
    std::size_t keys = 0;
    std::size_t values = 0;
};

/// Compares two keys with all below them; stops at the first difference.
bool sameTree(const regf::Key& left, const regf::Key& right, Totals& totals)
{
    ++totals.keys;
    totals.values += left.values().size();
    const bool same = left.name() == right.name() && left.className() == right.className()
        && left.timestamp() == right.timestamp() && left.flags() == right.flags()
        && left.header().userFlags == right.header().userFlags
        && left.header().access == right.header().access && left.security() == right.security()
        && left.values() == right.values() && left.childCount() == right.childCount();
    for (std::size_t i = 0; same && i < left.childCount(); ++i) {
        if (!sameTree(*left.childAt(i), *right.childAt(i), totals))
            return false;
    }
    EXPECT_TRUE(same) << left.name().toStdString();
    return same;
}

/// Key by key and value by value, without where in the file a thing lies: that is free to change.
QByteArray hivexml(const QByteArray& hive)
{
    static const QRegularExpression place(u"<byte_run[^>]*>"_s);
    return QString::fromUtf8(test::toldBy(u"hivexml"_s, {}, hive)).remove(place).toUtf8();
}

} // namespace

struct RealHive
{
    const char* file;
    bool clean;
    std::size_t services; ///< as counted by other readers
};

class RealHives : public testing::TestWithParam<RealHive>
{
};

TEST_P(RealHives, AreTheSameAfterARewrite)
{
    const QByteArray bytes = realData(QString::fromLatin1(GetParam().file));
    if (bytes.isEmpty())
        GTEST_SKIP() << "QUORIL_REAL_DATA is not set";
    const Result<regf::Hive> hive = regf::Hive::parse(bytes);
    ASSERT_TRUE(hive) << hive.failure().detail.toStdString();
    EXPECT_EQ(hive->notShutDownCleanly(), !GetParam().clean);
    const regf::Key* services = hive->root().find(u"controlset001\\SERVICES");
    ASSERT_TRUE(services);
    EXPECT_EQ(services->childCount(), GetParam().services);

    const Result<QByteArray> written = hive->serialize(hive->lastWritten());
    ASSERT_TRUE(written) << hive->problems().join(u'\n').toStdString();
    const Result<regf::Hive> again = regf::Hive::parse(*written);
    ASSERT_TRUE(again);
    EXPECT_FALSE(again->notShutDownCleanly());
    Totals totals;
    EXPECT_TRUE(sameTree(hive->root(), again->root(), totals));
    EXPECT_GT(totals.keys, 10000U);
    EXPECT_GT(totals.values, totals.keys);

    const QByteArray before = hivexml(bytes);
    if (before.isEmpty())
        GTEST_SKIP() << "hivexml is not installed or can't read the original";
    EXPECT_TRUE(hivexml(*written) == before);
}

INSTANTIATE_TEST_SUITE_P(Files, RealHives,
    testing::Values(RealHive{"SYSTEM-clean", true, 467}, RealHive{"SYSTEM-dirty", false, 469}));

TEST(RealHive, WithZeroedBinsIsReadButNeverWrittenAgain)
{
    const QByteArray bytes = realData(u"SYSTEM-corrupt"_s);
    if (bytes.isEmpty())
        GTEST_SKIP() << "QUORIL_REAL_DATA is not set";
    const Result<regf::Hive> hive = regf::Hive::parse(bytes);
    ASSERT_TRUE(hive);
    EXPECT_GT(hive->root().childCount(), 0U);
    EXPECT_EQ(hive->rewritable().errorNumber(), error::RegistryCorrupt);
    EXPECT_EQ(hive->serialize(0).errorNumber(), error::RegistryCorrupt);
    EXPECT_TRUE(hive->damaged());
}
