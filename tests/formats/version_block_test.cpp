#include "formats/version_block.h"

#include "support/executable_sample.h"

#include <QBuffer>

namespace quoril::test {

namespace {

Result<QString> versionOf(QByteArray bytes)
{
    QBuffer file(&bytes);
    file.open(QIODevice::ReadOnly);
    const auto block = readVersionBlock(file);
    return block ? fileVersionOf(*block) : Result<QString>(block.failure());
}

TEST(VersionBlock, IsReadFromExecutablesOfBothSizes)
{
    const QByteArray block = versionBlock(u"4.2.1.7 beta");
    EXPECT_EQ(*versionOf(executableOf({{0x407, block}}, false)), u"4.2.1.7 beta");
    EXPECT_EQ(*versionOf(executableOf({{0x407, block}}, true)), u"4.2.1.7 beta");
    const QByteArray other = versionBlock(u"other");
    EXPECT_EQ(*versionOf(executableOf({{0x407, other}, {0x409, block}})), u"4.2.1.7 beta");
    EXPECT_EQ(*versionOf(executableOf({{0x407, other}, {0x409, other}, {0, block}})), u"4.2.1.7 beta");
    EXPECT_EQ(versionOf(executableOf({})).errorNumber(), error::ResourceDataNotFound);
}

TEST(VersionBlock, HasItsTextInTheTranslationsTable)
{
    EXPECT_EQ(*fileVersionOf(versionBlock(u"1.0", u"040904b0")), u"1.0");
    EXPECT_EQ(*fileVersionOf(versionBlock(u"")), u"");
    EXPECT_EQ(fileVersionOf(versionBlock(u"1.0", u"040704b0")).errorNumber(), error::ResourceNameNotFound);
    EXPECT_EQ(
        fileVersionOf(versionBlock(u"1.0", u"040904b0", false)).errorNumber(), error::ResourceTypeNotFound);

    // A tool that counts the size of a text in bytes.
    QByteArray inBytes = versionBlock(u"1.2.3");
    const qsizetype size = inBytes.indexOf(units(u"FileVersion")) - 4;
    setAt<quint16>(inBytes, size, 12);
    EXPECT_EQ(*fileVersionOf(inBytes), u"1.2.3");
}

TEST(VersionBlock, IsNotFoundInDamage)
{
    const QByteArray whole = executableOf({{0, versionBlock(u"1.2.3.4")}});
    for (qsizetype size = 0; size < whole.size(); ++size)
        EXPECT_FALSE(versionOf(whole.left(size))) << size;
    EXPECT_EQ(versionOf("MZ but no more than that").errorNumber(), error::BadExeFormat);
    QByteArray plain = whole;
    plain[512 + 16] = 24;
    EXPECT_EQ(versionOf(plain).errorNumber(), error::ResourceTypeNotFound);
}

} // namespace

} // namespace quoril::test
