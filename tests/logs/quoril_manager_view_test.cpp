#include "logs/quoril_manager_view.h"

#include "logs/panel_table_model.h"
#include "logs/type_ahead_widget.h"
#include "resources/resource_module.h"
#include "services/service_info.h"
#include "support/fake_machine.h"
#include "support/log_lines.h"
#include "support/person.h"
#include "support/utf16.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QMenu>

#include <cmath>

namespace quoril::test {
namespace {

class QuorilManagerView : public testing::Test
{
protected:
    QuorilManagerView()
    {
        fake.fakeFiles.put(u"C:\\log", units(logOf(501)));
        service.LogFile = u"C:\\log"_s;
        view.resize(800, 300);
        view.show();
    }
    std::vector<int> widths() const
    {
        std::vector<int> all;
        for (int column = 0; column < view.horizontalHeader()->count(); ++column)
            all.push_back(view.columnWidth(column));
        return all;
    }

    FakeMachine fake;
    ServiceInfo service;
    CQuorilManagerView view;
};

TEST_F(QuorilManagerView, RemembersTheWidthsOfEachTable)
{
    const int client = view.viewport()->width();
    view.ShowConfigurationTable(service);
    EXPECT_EQ(widths(), (std::vector{client / 5 * 3, client / 5 * 2}));
    view.setColumnWidth(0, 77);
    view.ShowEmptyLogTable();
    const int logClient = view.viewport()->width();
    EXPECT_EQ(widths(), (std::vector{logClient / 8, logClient / 8, logClient * 8}));
    view.setColumnWidth(1, 55);
    view.ClearList();
    EXPECT_TRUE(widths().empty());
    view.ShowConfigurationTable(service);
    EXPECT_EQ(widths().front(), 77);
    view.horizontalHeader()->moveSection(0, 1);
    // The list was emptied before the width of 55 was kept.
    view.ShowEmptyLogTable();
    EXPECT_EQ(widths()[1], logClient / 8);
    EXPECT_EQ(view.horizontalHeader()->visualIndex(0), 0);
}

TEST_F(QuorilManagerView, ShowsMarksThatTurnTextAsTheyAreSpelt)
{
    const auto shown = [this](const QString& line) {
        fake.fakeFiles.put(u"C:\\log", units(logLine(line)));
        view.ShowLogTable(service);
        view.setColumnWidth(2, 400);
        QCoreApplication::processEvents();
        return view.viewport()->grab().toImage();
    };
    shown(u"the widths settle"_s);
    const QImage marked = shown(u"exe\u202Egpj\x1b."_s);
    EXPECT_TRUE(marked == shown(u"exe\\u202egpj\\u001b."_s));
    EXPECT_FALSE(marked == shown(u"exegpj."_s));
}

TEST_F(QuorilManagerView, CopiesTheSelectedRows)
{
    QClipboard* const clipboard = QApplication::clipboard();
    clipboard->setText(u"old"_s);
    view.copy();
    EXPECT_EQ(clipboard->text(), u"old"_s);
    view.ShowLogTable(service);
    Person::type(view, Qt::Key_Home);
    Person::type(view, Qt::Key_Down, Qt::ShiftModifier);
    Person::type(view, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(clipboard->text(),
        u"2001-02-03 04:05:06    00000249    line 0\r\n2001-02-03 04:05:06    00000249    line 1\r\n"_s);
    Person::type(view, Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(view.selectedRanges(), (std::vector<RowRange>{{0, 500}}));
    view.clearSelection();
    view.copy();
    EXPECT_EQ(clipboard->text(), QString());
}

TEST_F(QuorilManagerView, OffersCopyOverRowsOnly)
{
    const auto rightClick = [this] {
        QContextMenuEvent event(QContextMenuEvent::Mouse, {5, 5}, view.mapToGlobal(QPoint(5, 5)));
        QApplication::sendEvent(view.viewport(), &event);
        return view.findChild<QMenu*>();
    };
    view.ShowEmptyLogTable();
    EXPECT_EQ(rightClick(), nullptr);
    view.ShowLogTable(service);
    QMenu* const popup = rightClick();
    ASSERT_NE(popup, nullptr);
    ASSERT_EQ(popup->actions().size(), 1);
    EXPECT_EQ(popup->actions().front()->text(), u"Copy selection to Clipboard"_s);
    view.selectRow(1);
    popup->actions().front()->trigger();
    EXPECT_EQ(QApplication::clipboard()->text(), u"2001-02-03 04:05:06    00000249    line 1\r\n"_s);
}

double luminance(const QColor& colour)
{
    const auto part = [](double value) {
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * part(colour.redF()) + 0.7152 * part(colour.greenF()) + 0.0722 * part(colour.blueF());
}

TEST_F(QuorilManagerView, KeepsTheSeverityInSightAndTheTextReadable)
{
    fake.fakeFiles.put(u"C:\\log",
        units(logLine(u"one"_s) + logLine(u"two"_s, u"24A"_s, u":WARN :"_s)
            + logLine(u"three"_s, u"24B"_s, u":ERROR:"_s)));
    for (const QColor& highlight : {QColor(48, 140, 198), QColor(0, 0, 128), QColor(255, 255, 0)}) {
        QPalette palette = view.palette();
        palette.setColor(QPalette::Highlight, highlight);
        view.setPalette(palette);
        view.ShowLogTable(service);
        for (int row = 0; row < 3; ++row) {
            const QRect cell = view.visualRect(view.model()->index(row, 0));
            const auto ground
                = [&](const QImage& image) { return image.pixelColor(cell.right() - 1, cell.top() + 2); };
            const QColor plain = ground(view.viewport()->grab().toImage());
            view.selectRow(row);
            const QImage image = view.viewport()->grab().toImage();
            EXPECT_NE(ground(image), plain);
            EXPECT_NE(ground(image), highlight);
            double contrast = 1;
            const double light = luminance(ground(image));
            for (int x = cell.left(); x < cell.right(); ++x) {
                const double pixel = luminance(image.pixelColor(x, cell.center().y()));
                contrast
                    = std::max(contrast, (std::max(pixel, light) + 0.05) / (std::min(pixel, light) + 0.05));
            }
            EXPECT_GE(contrast, 4.5) << row;
        }
    }
}

TEST_F(QuorilManagerView, FindsWhatIsTypedBetweenTheEvents)
{
    class Rows : public PanelRows
    {
        qsizetype count() const override { return 3'000'000; }
        QString text(qsizetype row, int) const override { return row == count() - 1 ? u"end"_s : u"row"_s; }
        PanelColour colour(qsizetype) const override { return 0; }
    };
    PanelTable table({PanelColumn{}});
    table.addRows(std::make_shared<Rows>());
    PanelTableModel model;
    model.setTable(table);
    QTableView list;
    list.setModel(&model);
    TypeAhead typed(list);
    typed.type(u"en"_s);
    EXPECT_TRUE(typed.isSearching()) << "a key waits for the whole list";
    EXPECT_TRUE(Person::waitFor([&] { return !typed.isSearching(); }));
    EXPECT_EQ(list.currentIndex().row(), 2'999'999);
}

} // namespace
} // namespace quoril::test
