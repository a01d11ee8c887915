#include "formats/name_case.h"

namespace quoril::test {

TEST(NameCase, FoldsUnitByUnitAndOnlyWhereThereIsAWayBack)
{
    struct Case
    {
        QStringView left;
        QStringView right;
        bool equal;
    };
    const Case cases[] = {
        {u"Services", u"sERVICES", true},
        {u"\u00E4\u0436\u03C9\u00FF", u"\u00C4\u0416\u03A9\u0178", true},
        {u"a", u"ab", false},
        {u"\u0131", u"I", false}, // dotless i
        {u"\u017F", u"S", false}, // long s
        {u"\u00DF", u"SS", false},
        {u"\u03C2", u"\u03A3", false}, // final sigma
        {u"\u0130\u212A", u"ik", false}, // dotted I, Kelvin sign
        {u"\u1F80\u1F97\u1FB3\u1FF3", u"\u1F88\u1F9F\u1FBC\u1FFC", true}, // capitals in title case
        {u"\u01C6", u"\u01C4", true}, // a digraph, whose title case is a third unit
        {u"\u01C6", u"\u01C5", false},
        {u"\U00010428", u"\U00010400", false}, // outside the first plane
        {QStringView(u"\0A", 2), QStringView(u"\0a", 2), true},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(foldedEquals(each.left, each.right), each.equal) << each.left;
        EXPECT_EQ(foldedCompare(each.left, each.right) == 0, each.equal);
        EXPECT_EQ(upcase(each.left) == upcase(each.right), each.equal);
        EXPECT_EQ(downcase(each.left) == downcase(each.right), each.equal);
        EXPECT_TRUE(foldedEquals(downcase(each.right), each.right));
        if (each.equal) {
            EXPECT_EQ(FoldedHash()(each.left), FoldedHash()(each.right));
        }
    }
}

} // namespace quoril::test
