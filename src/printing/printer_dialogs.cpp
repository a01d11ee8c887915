#include "printing/printer_dialogs.h"

#include "printing/page_painter.h"
#include "printing/print_setup_dialog.h"
#include "resources/resource_module.h"
#include "resources/text_ids.h"

#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>

namespace quoril {

namespace {

constexpr QSize PreviewSize(760, 560);

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
    QPrintDialog dialog(&printer(), parent);
    dialog.setWindowTitle(LoadText(text::Print));
    dialog.setOptions(QAbstractPrintDialog::PrintSelection | QAbstractPrintDialog::PrintCollateCopies
        | QAbstractPrintDialog::PrintShowPageSize);
    // The file is the only printer where none is installed.
    dialog.setOption(QAbstractPrintDialog::PrintToFile, PdfFileIsPrinter);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    request.selectionOnly = m_printer->printRange() == QPrinter::Selection;
    request.copies = m_printer->copyCount();
    // The copies are made here, as one document; the printer would multiply them once more.
    m_printer->setCopyCount(1);
    m_printer->setPrintRange(QPrinter::AllPages);
    return true;
}

void PrinterDialogs::setUp(QWidget* parent)
{
    PrintSetupDialog(printer(), parent).exec();
}

void PrinterDialogs::preview(const PreparePages& prepare, const DrawOnPage& draw, QWidget* parent)
{
    QPrintPreviewDialog dialog(&printer(), parent);
    dialog.setWindowTitle(LoadText(text::PreviewTitle));
    dialog.resize(PreviewSize);
    QObject::connect(&dialog, &QPrintPreviewDialog::paintRequested, &dialog, [&](QPrinter* printer) {
        m_print_info = {};
        if (!prepare(m_print_info))
            return;
        // The file that the printer may have to write is none of the preview's concern.
        printer->setDocName(LoadText(text::PrintDocumentName));
        PagePainter painter(*printer);
        for (int page = 1; page <= m_print_info.maximumPage && painter.startPage(); ++page) {
            m_print_info.currentPage = page;
            draw(painter);
        }
        painter.endDocument();
    });
    dialog.exec();
}

} // namespace quoril
