#include "logs/quoril_manager_view.h"
#include "printing/page_painter.h"
#include "services/service_info.h"
#include "support/fake_machine.h"
#include "support/person.h"
#include "support/utf16.h"

#include <QComboBox>
#include <QImage>
#include <QLineEdit>
#include <QPageLayout>
#include <QPrinter>
#include <QPrinterInfo>
#include <QProcess>
#include <QSpinBox>
#include <QTemporaryDir>

namespace quoril::test {

namespace {

/// A view over a log of chosen length, printed to a file and read back.
class PrintedPanel : public testing::Test
{
protected:
    using Choice = std::function<void(QWidget&)>;

    PrintedPanel()
    {
        showLines(1);
        m_otherRows = int(view.table().rowCount()) - 1;
    }

    void showLines(int lines)
    {
        QString text = u"20010203:040506:INFO :  00000249"_s + QString(20, u' ') + u"line 0\r\n"_s;
        for (int i = 1; i < lines; ++i)
            text += u"line %1\r\n"_s.arg(i);
        fake.fakeFiles.put(u"C:\\log", units(text));
        service.LogFile = u"C:\\log"_s;
        view.ShowLogTable(service);
    }
    void showRows(int rows)
    {
        showLines(rows - m_otherRows);
        ASSERT_EQ(view.table().rowCount(), rows);
    }

    /// The texts of the pages that come out; none without a file.
    QStringList print(const Choice& choose = {})
    {
        const QString file = folder.filePath(u"out.pdf"_s);
        QFile::remove(file);
        person.on(u"Print"_s, [&](QWidget& window) {
            window.findChild<QLineEdit*>(u"1070"_s)->setText(file);
            if (choose)
                choose(window);
            Person::press(window, 1);
        });
        view.PrintPanel();
        EXPECT_EQ(person.left(), 0U);
        if (!QFile::exists(file))
            return {};
        QProcess reader;
        reader.start(u"pdftotext"_s, {u"-layout"_s, file, u"-"_s});
        EXPECT_TRUE(reader.waitForFinished() && reader.exitCode() == 0);
        QStringList pages = QString::fromUtf8(reader.readAllStandardOutput()).split(u'\f');
        pages.removeLast(); // after the last page
        return pages;
    }
    static int lineCount(const QString& page) { return int(page.split(u'\n', Qt::SkipEmptyParts).size()); }

    FakeMachine fake;
    QTemporaryDir folder;
    ServiceInfo service;
    CQuorilManagerView view;
    Person person;

private:
    int m_otherRows = 0;
};

/// Lays the paper across in Print Setup.
void turnPaper(QWidget& window)
{
    auto* orientation = window.findChild<QComboBox*>(u"1062"_s);
    orientation->setCurrentIndex(1);
    auto* paper = window.findChild<QComboBox*>(u"1061"_s);
    EXPECT_TRUE(paper->currentText().contains(u"A4"_s) || paper->currentText().contains(u"Letter"_s));
    static_cast<QDialog&>(window).accept();
}

TEST_F(PrintedPanel, IsPreviewedAPageAtATimeAndPrintedFromThere)
{
    showRows(300);
    QList<int> drawn;
    CPrintInfo* prepared = nullptr;
    const auto draw = [&](PageCanvas& canvas) {
        drawn.append(prepared->currentPage);
        view.OnDraw(canvas);
    };
    bool printed = false;
    person.on(u"Preview"_s, [&](QWidget& window) {
        const auto look = [&](int button) {
            drawn.clear();
            if (button != 0)
                Person::press(window, button);
            window.grab();
            return drawn;
        };
        const std::pair<int, QList<int>> steps[] = {
            {0, {1}}, {1101, {2}}, {1103, {2, 3}}, {1101, {4, 5}}, {1102, {2, 3}}, {1103, {2}}, {1104, {2}}};
        for (const auto& [button, pages] : steps)
            EXPECT_EQ(look(button), pages) << button;
        EXPECT_FALSE(printed);
        Person::press(window, 1100);
    });
    view.printing().preview(
        [&](CPrintInfo& info) {
            prepared = &info;
            return view.OnPreparePrinting(info);
        },
        draw, [&](QWidget&) { return printed = true; }, &view);
    EXPECT_TRUE(printed);
    EXPECT_EQ(prepared->maximumPage, 5);
}

TEST(PageUnits, LeaveTheMarginsOfThePaperFree)
{
    const auto place = [](QPageSize::PageSizeId id, QPageLayout::Orientation across, double margin) {
        QPageLayout paper(QPageSize(id), across, {margin, margin, margin, margin}, QPageLayout::Inch);
        QImage image(1, 1, QImage::Format_RGB32);
        QPainter painter(&image);
        setPageUnits(painter, paper, 600);
        const QRectF lines = painter.transform().mapRect(QRectF(450, 300, 10, 6200));
        EXPECT_GE(lines.top(), 600 * margin - 0.001);
        EXPECT_LE(lines.bottom(), 600 * (paper.fullRect().height() - margin) + 0.001);
        return painter.transform().m11();
    };
    EXPECT_EQ(place(QPageSize::A4, QPageLayout::Portrait, 0.5), 1.0);
    EXPECT_LT(place(QPageSize::Letter, QPageLayout::Portrait, 0.5), 1.0);
    EXPECT_LT(place(QPageSize::A4, QPageLayout::Landscape, 0.25), 0.8);
}

#ifdef Q_OS_WIN

TEST_F(PrintedPanel, ReportsThatThereIsNoPrinter)
{
    if (!QPrinterInfo::availablePrinterNames().isEmpty())
        GTEST_SKIP() << "a printer is installed";
    person.on(u"ERROR: 0200003E, SERVICE-MANAGER: Cannot find default printer"_s, Person::presses(1));
    view.PrintPanel();
    EXPECT_EQ(person.left(), 0U);

    person.on(u"Setup"_s, turnPaper);
    view.printing().setUp(&view);
    EXPECT_EQ(view.printing().printer().pageLayout().orientation(), QPageLayout::Landscape);
    EXPECT_FALSE(view.printing().hasPrinter());
}

#else // What follows drives Qt's own print dialog; that of Windows is the system's, and nobody sits before it
      // here.

TEST_F(PrintedPanel, IsTheSelectionWhereThatIsChosen)
{
    showRows(100);
    view.selectionModel()->select(
        QItemSelection(view.model()->index(20, 0), view.model()->index(89, 2)), QItemSelectionModel::Select);
    const Choice selection = [](QWidget& dialog) { dialog.findChild<QAbstractButton*>(u"1073"_s)->click(); };
    const QStringList pages = print(selection);
    ASSERT_EQ(pages.size(), 2);
    EXPECT_EQ(lineCount(pages[0]), 62);
    EXPECT_EQ(lineCount(pages[1]), 8);
    EXPECT_EQ(print().join(QString()).count(u"line"_s), 100) << "the next time all rows are proposed";
    const QStringList shorter = print([&](QWidget& dialog) {
        selection(dialog);
        showLines(1);
    });
    EXPECT_EQ(shorter, QStringList()) << "rows that went while the dialog was open are not printed";
}

TEST_F(PrintedPanel, ShowsTheConfigurationAndNothingOfAnEmptyList)
{
    service.HomeDir = u"C:\\Quoril"_s;
    view.ShowConfigurationTable(service);
    const QStringList pages = print();
    ASSERT_EQ(pages.size(), 1);
    EXPECT_TRUE(pages[0].contains(u"C:\\Quoril"_s));

    view.ShowEmptyLogTable();
    EXPECT_EQ(print(), QStringList());
}

TEST_F(PrintedPanel, ReportsThatThePrinterCannotStart)
{
    showRows(3);
    person.on(u"Print"_s, [](QWidget& window) {
        window.findChild<QLineEdit*>(u"1070"_s)->setText(u"/proc/nothing.pdf"_s);
        Person::press(window, 1);
    });
    person.on(u"Printer wouldn't initalize"_s, [](QWidget& window) { window.close(); });
    view.PrintPanel();
    EXPECT_EQ(person.left(), 0U);
}

TEST_F(PrintedPanel, TakesPaperAndPrinterFromTheSetUp)
{
    person.on(u"Setup"_s, turnPaper);
    view.printing().setUp(&view);
    EXPECT_EQ(view.printing().printer().pageLayout().orientation(), QPageLayout::Landscape);
    showRows(62);
    const QStringList pages = print();
    ASSERT_EQ(pages.size(), 1);
    EXPECT_EQ(lineCount(pages[0]), 62) << "low paper takes all lines";
}

#endif

} // namespace

} // namespace quoril::test
