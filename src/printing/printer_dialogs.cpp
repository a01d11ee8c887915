#include "printing/printer_dialogs.h"

#include "printing/preview_dialog.h"
#include "printing/print_dialog.h"
#include "printing/print_setup_dialog.h"
#include "resources/resource_module.h"
#include "resources/text_ids.h"

#include <QPrinter>
#ifdef Q_OS_WIN
#include <QPrintDialog>
#endif

namespace quoril {

namespace {

/// Where there is no printer the toolkit takes a file instead, with which the dialog of Windows would end
/// without a word.
bool standsForNone(const QPrinter& printer)
{
    return !PdfFileIsPrinter && printer.outputFormat() != QPrinter::NativeFormat;
}

} // namespace

PrinterDialogs::PrinterDialogs() = default;
PrinterDialogs::~PrinterDialogs() = default;

QPrinter& PrinterDialogs::printer()
{
    if (!m_printer) {
        m_printer = std::make_unique<QPrinter>(QPrinter::HighResolution);
        m_printer->setResolution(page_geometry::UnitsPerInch);
        m_printer->setFullPage(true);
    }
    return *m_printer;
}

bool PrinterDialogs::hasPrinter()
{
    return printer().isValid() && !standsForNone(printer());
}

bool PrinterDialogs::askHowToPrint(PrintRequest& request, QWidget* parent)
{
    if (standsForNone(printer()))
        return true;
#ifdef Q_OS_WIN
    QPrintDialog dialog(&printer(), parent);
    dialog.setWindowTitle(loadText(text::Print));
    dialog.setOptions(QAbstractPrintDialog::PrintSelection | QAbstractPrintDialog::PrintCollateCopies);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    request.selectionOnly = m_printer->printRange() == QPrinter::Selection;
    request.copies = m_printer->copyCount();
    // The copies are made here, as one document; the printer would multiply them once more.
    m_printer->setCopyCount(1);
    m_printer->setPrintRange(QPrinter::AllPages);
    return true;
#else
    // The toolkit's dialog also offers a range of pages and their reverse order, which the console doesn't
    // know.
    return PrintDialog(printer(), request, parent).exec() == QDialog::Accepted;
#endif
}

void PrinterDialogs::setUp(QWidget* parent)
{
    PrintSetupDialog(printer(), parent).exec();
}

void PrinterDialogs::preview(
    const PreparePages& prepare, const DrawOnPage& draw, const PrintOver& print, QWidget* parent)
{
    m_print_info = {};
    if (!prepare(m_print_info))
        return;
    const auto drawPage = [this, &draw](int page, PageCanvas& canvas) {
        m_print_info.currentPage = page;
        draw(canvas);
    };
    PreviewDialog(printer().pageLayout(), m_print_info.maximumPage, drawPage, print, parent).exec();
}

} // namespace quoril
