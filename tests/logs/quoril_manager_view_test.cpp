#include "logs/quoril_manager_view.h"

#include "resources/resource_module.h"
#include "shell/service_info.h"
#include "support/fake_machine.h"
#include "support/utf16.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QScrollBar>

#include <gmock/gmock.h>

namespace quoril {
namespace {

using namespace Qt::StringLiterals;

class QuorilManagerView : public testing::Test
{
protected:
    QuorilManagerView()
    {
        QString text = u"20010203:040506:INFO :  00000249"_s + QString(20, u' ') + u"first\r\n"_s;
        for (int i = 0; i < 500; ++i)
            text += u"line %1\r\n"_s.arg(i);
        fake.fakeFiles.put(u"C:\\log", test::units(text));
        service.LogFile = u"C:\\log"_s;
        view.resize(800, 300);
        view.show();
    }
    void press(int key, Qt::KeyboardModifiers modifiers = {})
    {
        QKeyEvent event(QEvent::KeyPress, key, modifiers);
        QApplication::sendEvent(&view, &event);
    }
    std::vector<int> widths() const
    {
        std::vector<int> all;
        for (int column = 0; column < view.horizontalHeader()->count(); ++column)
            all.push_back(view.columnWidth(column));
        return all;
    }

    test::FakeMachine fake;
    ScopedMachine inForce{fake};
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

TEST_F(QuorilManagerView, ShowsTheLastRowsOfALog)
{
    view.ShowLogTable(service);
    ASSERT_EQ(view.table().rowCount(), 501);
    const QRect last = view.visualRect(view.model()->index(500, 0));
    EXPECT_TRUE(view.viewport()->rect().contains(last.adjusted(0, 0, -last.width() + 1, 0)));
    EXPECT_EQ(view.horizontalScrollBar()->value(), 0);
}

TEST_F(QuorilManagerView, ShowsMarksThatTurnTextAsTheyAreSpelt)
{
    const auto shown = [this](const QString& line) {
        const QString text = u"20010203:040506:INFO :  00000249"_s + QString(20, u' ') + line + u"\r\n"_s;
        fake.fakeFiles.put(
            u"C:\\log", QByteArray(reinterpret_cast<const char*>(text.utf16()), text.size() * 2));
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
    view.Copy();
    EXPECT_EQ(clipboard->text(), u"old"_s);
    view.ShowLogTable(service);
    press(Qt::Key_Home);
    press(Qt::Key_Down, Qt::ShiftModifier);
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(clipboard->text(),
        u"2001-02-03 04:05:06    00000249    first\r\n2001-02-03 04:05:06    00000249    line 0\r\n"_s);
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(view.selectedRanges(), (std::vector<RowRange>{{0, 500}}));
    view.clearSelection();
    view.Copy();
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
    EXPECT_EQ(QApplication::clipboard()->text(), u"2001-02-03 04:05:06    00000249    line 0\r\n"_s);
}

TEST_F(QuorilManagerView, KeepsTheSeverityInSightOfSelectedRows)
{
    view.ShowLogTable(service);
    const QRect cell = view.visualRect(view.model()->index(500, 0));
    const auto ground
        = [&] { return view.viewport()->grab().toImage().pixelColor(cell.right() - 1, cell.top() + 2); };
    EXPECT_EQ(ground(), QColor(255, 255, 230));
    view.selectRow(500);
    const QColor selected = ground();
    EXPECT_NE(selected, QColor(255, 255, 230));
    EXPECT_NE(selected, view.palette().color(QPalette::Highlight));
}

} // namespace
} // namespace quoril
