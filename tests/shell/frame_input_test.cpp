// The frame's panes with keyboard and mouse of the window system.

#include "logs/panel_row_painter.h"
#include "logs/quoril_manager_view.h"
#include "resources/text_ids.h"
#include "support/console_test.h"
#include "support/hands.h"
#include "support/log_lines.h"
#include "support/utf16.h"

#include <QHeaderView>
#include <QMenu>
#include <QScrollBar>

namespace quoril::test {
namespace {

constexpr int Lines = 500;

class FrameInput : public ConsoleTest
{
protected:
    Person person;
    Hands hands;

    void SetUp() override
    {
        m_machine.fakeFiles.put(u"C:\\log", units(logOf(Lines)));
        ConsoleTest::SetUp();
        m_console.document()->m_services[0].LogFile = u"C:\\log"_s;
        Hands::take(frame());
    }

    CQuorilManagerView& panel() { return *frame().GetRightView(); }
    int currentRow() { return panel().currentIndex().row(); }
    void expectPopupOver(QWidget& pane, QRect row)
    {
        hands.key(u"Menu"_s);
        const QWidget* const popup = QApplication::activePopupWidget();
        ASSERT_NE(popup, nullptr);
        const QPoint corner = pane.mapFromGlobal(popup->pos());
        EXPECT_TRUE(pane.rect().contains(corner));
        EXPECT_LE(std::abs(corner.y() - row.bottom()), row.height());
        hands.key(u"Escape"_s);
    }
};

TEST_F(FrameInput, ALogIsReadByTheKeyboardAlone)
{
    hands.key(u"Down Down"_s); // the machine, then its first instance
    ASSERT_EQ(panel().table().rowCount(), Lines);
    expectPopupOver(*tree().viewport(), tree().visualItemRect(tree().currentItem()));
    hands.key(u"Tab"_s);
    ASSERT_TRUE(panel().hasFocus());
    EXPECT_EQ(currentRow(), Lines - 1);
    EXPECT_TRUE(panel().selectedRanges().empty());
    EXPECT_LE(panel().visualRect(panel().currentIndex()).bottom(), panel().viewport()->rect().bottom());
    EXPECT_EQ(panel().horizontalScrollBar()->value(), 0);
    const QImage withFocus = panel().viewport()->grab().toImage();
    tree().setFocus();
    EXPECT_NE(panel().viewport()->grab().toImage(), withFocus) << "nothing shows where the focus is";
    panel().setFocus();

    const int page = panel().viewport()->height() / panel().rowHeight(0);
    for (const auto& [key, row] : std::initializer_list<std::pair<QString, int>>{{u"Prior"_s, Lines - page},
             {u"Home"_s, 0}, {u"Next"_s, page - 1}, {u"ctrl+End"_s, Lines - 1}, {u"ctrl+Home"_s, 0}}) {
        hands.key(key);
        EXPECT_NEAR(currentRow(), row, 2) << key;
    }
    expectPopupOver(*panel().viewport(), panel().visualRect(panel().currentIndex()));
}

TEST_F(FrameInput, ADateIsSeenAndADividerShowsTheWholeText)
{
    hands.key(u"Down Down"_s);
    const QString date = panel().table().text(0, 0);
    const int whole = panel().fontMetrics().horizontalAdvance(date) + 2 * PanelRowPainter::margin(&panel());
    EXPECT_GE(panel().columnWidth(0), whole) << "at the first size of the window";
    panel().setColumnWidth(0, 40);
    const QHeaderView& header = *panel().horizontalHeader();
    hands.pointAt(*header.viewport(), {39, header.height() / 2});
    hands.doubleClick();
    EXPECT_GE(panel().columnWidth(0), whole);
    EXPECT_LE(panel().columnWidth(0), whole + 20);
}

TEST_F(FrameInput, APreviewIsReadByTheKeyboardAlone)
{
    hands.key(u"Down Down"_s);
    person.on(u"Preview"_s, [this](QWidget& preview) {
        Hands::take(preview);
        const auto* const place = preview.findChild<QLabel*>(u"1106"_s);
        const std::pair<QString, QString> steps[]
            = {{u"Next"_s, u"Page 2 of 9"_s}, {u"End"_s, u"Page 9 of 9"_s}, {u"Prior"_s, u"Page 8 of 9"_s},
                {u"Home"_s, u"Page 1 of 9"_s}, {u"alt+n"_s, u"Page 2 of 9"_s}};
        for (const auto& [keys, shown] : steps) {
            hands.key(keys);
            // A button is seen to go down and up before it acts.
            EXPECT_TRUE(Person::waitFor([&, &text = shown] { return place->text() == text; }))
                << qPrintable(keys);
        }
        Hands::lastKey(u"Escape"_s);
    });
    frame().commands().action(command::PrintPreview)->trigger();
    EXPECT_EQ(person.left(), 0U);
}

} // namespace
} // namespace quoril::test
