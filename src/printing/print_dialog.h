#pragma once

#include "printing/panel_pages.h"
#include "services/template_dialog.h"

class QComboBox;
class QPrinter;
class QRadioButton;
class QSpinBox;

namespace quoril {

/// Asks for printer or PDF file, for all rows or the selected ones, and for the copies. Nothing of it stays
/// for the next time but the printer and the file.
class PrintDialog : public TemplateDialog
{
public:
    /// The printer takes the choice when the dialog ends with OK. Neither is owned.
    PrintDialog(QPrinter& printer, PrintRequest& request, QWidget* parent);

    void accept() override;

protected:
    void OnInitDialog() override;

private:
    QGroupBox* makeRange();
    QRadioButton* radioButton(quint32 id);
    void enableFile();
    void OnBrowse();
    bool mayReplace(const QString& file);

    QPrinter& m_printer;
    PrintRequest& m_request;
    QComboBox* m_printers;
    QLineEdit* m_file;
    QPushButton* m_browse;
    QRadioButton* m_allRows;
    QRadioButton* m_selection;
    QSpinBox* m_copies;
    QString m_confirmed; ///< a file that the picker asked about
};

} // namespace quoril
