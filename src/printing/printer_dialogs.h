#pragma once

#include "printing/panel_pages.h"

#include <functional>
#include <memory>

class QPrinter;
class QWidget;

namespace quoril {

/// The printer of the console's run and the dialogs that use it: what one of them sets stays for the next
/// print-out.
class PrinterDialogs
{
public:
    PrinterDialogs();
    ~PrinterDialogs();

    /// Made when it is first asked for: looking for printers takes its time.
    QPrinter& printer();

    /// Whether there is a printer to print on.
    bool hasPrinter();
    /// Asks for printer, all rows or the selection, and copies. False if the person left it;
    /// without a printer there is nothing to ask.
    bool askHowToPrint(PrintRequest& request, QWidget* parent);
    /// Print Setup: printer, paper and its orientation.
    void setUp(QWidget* parent);

    using PreparePages = std::function<bool(CPrintInfo&)>;
    using DrawOnPage = std::function<void(PageCanvas&)>;
    /// Prints over the window after asking how; false if the person left the question.
    using PrintOver = std::function<bool(QWidget&)>;
    /// Shows the preview until it is closed or has printed. It has its pages prepared once, and a page drawn
    /// when it is looked at; the information on them lives as long as this object.
    void preview(
        const PreparePages& prepare, const DrawOnPage& draw, const PrintOver& print, QWidget* parent);

private:
    std::unique_ptr<QPrinter> m_printer;
    CPrintInfo m_print_info;
};

} // namespace quoril
