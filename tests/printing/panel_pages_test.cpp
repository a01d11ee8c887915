#include "printing/panel_pages.h"

#include <QStringList>

namespace quoril::test {

namespace {

PanelTable tableOf(int rows, int columns = 3)
{
    PanelTable table(std::vector<PanelColumn>(std::size_t(columns), PanelColumn{}));
    for (int row = 0; row < rows; ++row) {
        QStringList texts;
        for (int column = 0; column < columns; ++column)
            texts.append(u"%1.%2"_s.arg(row).arg(column));
        table.addRow(texts, 0xFFFFFF);
    }
    return table;
}

/// Writes down what is printed: "[" and "]" for a page, "<" and ">" for the document, and the number of
/// lines.
class Recorder : public PrintTarget, public PageCanvas
{
public:
    bool startDocument(const QString& name) override
    {
        did += u'<' + name;
        return failAt != 0;
    }
    PageStart startPage() override
    {
        did += u'[';
        return ++m_pages != failAt ? PageStart::Started : failure;
    }
    void textOut(QPoint place, const QString& text) override
    {
        did += u'.';
        places.push_back(place);
        lines.append(text);
    }
    void drawText(const QRect& place, const QString& text) override { textOut(place.topLeft(), text); }
    void endPage() override { did += u']'; }
    void endDocument() override { did += u'>'; }

    QString did;
    QStringList lines;
    std::vector<QPoint> places;
    int failAt = -1; ///< the page that fails, 0 for the document
    PageStart failure = PageStart::PageFailed;

private:
    int m_pages = 0;
};

QString page(int lines)
{
    return u'[' + QString(lines, u'.') + u']';
}

TEST(PanelPages, PutSixtyTwoRowsOnEach)
{
    EXPECT_EQ(pageCount(0), 0);
    EXPECT_EQ(pageCount(62), 1);
    EXPECT_EQ(pageCount(63), 2);

    Recorder all;
    EXPECT_EQ(printRows(tableOf(63), {}, u"doc"_s, all), PrintOutcome::Printed);
    EXPECT_EQ(all.did, u"<doc"_s + page(62) + page(1) + u'>');
    EXPECT_EQ(all.lines[0], u"0.0   0.1   0.2   "_s);
    EXPECT_EQ(all.lines.last(), u"62.0   62.1   62.2   "_s);
    EXPECT_EQ(all.places[0], QPoint(450, 300));
    EXPECT_EQ(all.places[61], QPoint(450, 6400));
    EXPECT_EQ(all.places[62], QPoint(450, 300));

    Recorder preview;
    DrawPage(tableOf(64), 2, preview);
    EXPECT_EQ(preview.lines, QStringList({u"62.0   62.1   62.2   "_s, u"63.0   63.1   63.2   "_s}));
    EXPECT_EQ(preview.places, std::vector({QPoint(450, 300), QPoint(450, 400)}));

    Recorder copies;
    EXPECT_EQ(printRows(tableOf(62, 2), {false, 3, {}}, u"doc"_s, copies), PrintOutcome::Printed);
    EXPECT_EQ(copies.did, u"<doc"_s + page(62) + page(62) + page(62) + u'>');
    EXPECT_EQ(copies.lines[0], u"0.0   0.1      "_s);
}

TEST(PanelPages, TakeTheSelectedRowsInListOrder)
{
    const PrintRequest request{true, 2, {{5, 6}, {100, 167}}};
    Recorder some;
    EXPECT_EQ(printRows(tableOf(200), request, u"doc"_s, some), PrintOutcome::Printed);
    EXPECT_EQ(some.did, u"<doc"_s + page(62) + page(8) + page(62) + page(8) + u'>');
    EXPECT_TRUE(some.lines[1].startsWith(u"6.0"_s) && some.lines[2].startsWith(u"100.0"_s));
    EXPECT_EQ(some.places[62], QPoint(450, 300));

    Recorder none;
    EXPECT_EQ(printRows(tableOf(3), {true, 1, {}}, u"doc"_s, none), PrintOutcome::Printed);
    EXPECT_EQ(none.did, u"<doc>"_s);
}

TEST(PanelPages, EndWhereTheTargetFails)
{
    Recorder document;
    document.failAt = 0;
    EXPECT_EQ(printRows(tableOf(3), {}, u"doc"_s, document), PrintOutcome::DocumentNotStarted);
    EXPECT_EQ(document.did, u"<doc"_s);

    Recorder secondPage;
    secondPage.failAt = 2;
    EXPECT_EQ(printRows(tableOf(70), {}, u"doc"_s, secondPage), PrintOutcome::PageNotStarted);
    EXPECT_EQ(secondPage.did, u"<doc"_s + page(62) + u'[');

    Recorder firstPage;
    firstPage.failAt = 1;
    firstPage.failure = PageStart::DocumentFailed;
    EXPECT_EQ(printRows(tableOf(70), {}, u"doc"_s, firstPage), PrintOutcome::DocumentNotStarted);

    Recorder empty;
    EXPECT_EQ(printRows(tableOf(0), {}, u"doc"_s, empty), PrintOutcome::NothingToPrint);
    EXPECT_EQ(empty.did, u"<doc"_s);
}

} // namespace

} // namespace quoril::test
