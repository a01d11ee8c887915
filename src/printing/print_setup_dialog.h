#pragma once

#include "services/template_dialog.h"

class QComboBox;
class QPrinter;

namespace quoril {

/// Whether a PDF file is one of the printers. Windows has a printer for that, and its print dialog knows no
/// file.
#ifdef Q_OS_WIN
inline constexpr bool PdfFileIsPrinter = false;
#else
inline constexpr bool PdfFileIsPrinter = true;
#endif

/// Chooses printer, paper and orientation for later print-outs.
class PrintSetupDialog : public TemplateDialog
{
public:
    /// The printer takes the choice when the dialog ends with OK. Not owned.
    explicit PrintSetupDialog(QPrinter& printer, QWidget* parent = nullptr);

    void accept() override;

protected:
    void OnInitDialog() override;

private:
    void listPaper();

    QPrinter& m_printer;
    QComboBox* m_printers;
    QComboBox* m_paper;
    QComboBox* m_orientation;
};

} // namespace quoril
