#include "logs/quoril_manager_view.h"
#include "shell/service_info.h"
#include "support/fake_machine.h"
#include "support/person.h"
#include "support/utf16.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPrintDialog>
#include <QPrintPreviewWidget>
#include <QPrinter>
#include <QPrinterInfo>
#include <QProcess>
#include <QSpinBox>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace quoril::test {

using namespace Qt::StringLiterals;

namespace {

/// A view over a log of chosen length, printed to a file and read back.
class PrintedPanel : public testing::Test
{
protected:
    using Choice = std::function<void(QPrintDialog&)>;

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
        fake.fakeFiles.put(u"C:\\log", test::units(text));
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
            auto& dialog = dynamic_cast<QPrintDialog&>(window);
            dialog.findChild<QLineEdit*>(u"filename"_s)->setText(file);
            if (choose)
                choose(dialog);
            dialog.accept();
        });
        view.PrintPanel();
        EXPECT_EQ(person.left(), 0U);
        if (!QFile::exists(file))
            return {};
        QProcess reader;
        reader.start(u"pdftotext"_s, {u"-layout"_s, file, u"-"_s});
        EXPECT_TRUE(reader.waitForFinished() && reader.exitCode() == 0);
        QStringList pages = QString::fromUtf8(reader.readAllStandardOutput()).split(u'\f');
        pages.removeLast(); // behind the last page
        return pages;
    }
    static int lineCount(const QString& page) { return int(page.split(u'\n', Qt::SkipEmptyParts).size()); }

    FakeMachine fake;
    ScopedMachine inForce{fake};
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

TEST_F(PrintedPanel, IsPreviewedPageByPage)
{
    showRows(130);
    // Where the last print-out went doesn't matter to the preview.
    view.printing().printer().setOutputFileName(folder.filePath(u"gone/out.pdf"_s));
    int pages = 0;
    QList<int> drawn;
    person.on(u"Preview"_s, [&](QWidget& window) {
        auto* preview = window.findChild<QPrintPreviewWidget*>();
        Person::waitFor([&] { return preview->pageCount() > 1; });
        pages = preview->pageCount();
        static_cast<QDialog&>(window).reject();
    });
    CPrintInfo* last = nullptr;
    view.printing().preview(
        [&](CPrintInfo& info) {
            last = &info;
            return view.OnPreparePrinting(info);
        },
        [&](PageCanvas& canvas) {
            drawn.append(last->currentPage);
            view.OnDraw(canvas);
        },
        &view);
    EXPECT_EQ(pages, 3);
    EXPECT_EQ(drawn.first(3), (QList{1, 2, 3}));
}

#ifdef Q_OS_WIN

TEST_F(PrintedPanel, TellsThatThereIsNoPrinter)
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

TEST_F(PrintedPanel, HasSixtyTwoRowsOnAPage)
{
    showRows(62);
    EXPECT_EQ(print().size(), 1);
    showRows(63);
    const QStringList pages = print();
    ASSERT_EQ(pages.size(), 2);
    EXPECT_EQ(lineCount(pages[0]), 62);
    EXPECT_EQ(lineCount(pages[1]), 1);

    const QStringList copies
        = print([](QPrintDialog& dialog) { dialog.findChild<QSpinBox*>(u"copies"_s)->setValue(3); });
    EXPECT_EQ(copies, pages + pages + pages);
}

TEST_F(PrintedPanel, IsTheSelectionWhereThatIsChosen)
{
    showRows(100);
    view.selectionModel()->select(
        QItemSelection(view.model()->index(20, 0), view.model()->index(89, 2)), QItemSelectionModel::Select);
    const Choice selection
        = [](QPrintDialog& dialog) { dialog.findChild<QAbstractButton*>(u"printSelection"_s)->click(); };
    const QStringList pages = print(selection);
    ASSERT_EQ(pages.size(), 2);
    EXPECT_EQ(lineCount(pages[0]), 62);
    EXPECT_EQ(lineCount(pages[1]), 8);
    EXPECT_EQ(print().join(QString()).count(u"line"_s), 100) << "the next time all rows are proposed";
    const QStringList shorter = print([&](QPrintDialog& dialog) {
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

TEST_F(PrintedPanel, TellsThatThePrinterCannotStart)
{
    showRows(3);
    person.on(u"Print"_s, [](QWidget& window) {
        auto& dialog = dynamic_cast<QPrintDialog&>(window);
        dialog.done(QDialog::Accepted);
        dialog.printer()->setOutputFileName(u"/proc/nothing.pdf"_s);
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
