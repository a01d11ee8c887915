#include "printing/print_dialog.h"

#include "printing/print_setup_dialog.h"
#include "resources/text_ids.h"
#include "services/prompt_dialogs.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPrinter>
#include <QPrinterInfo>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QStandardPaths>

namespace quoril {

namespace ids = print_dialog;
using namespace Qt::StringLiterals;

namespace {

constexpr int SmallestWidth = 460;
constexpr int MostCopies = 999;

QString proposedFile(const QPrinter& printer)
{
    if (!printer.outputFileName().isEmpty())
        return printer.outputFileName();
    const QDir folder(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
    return QDir::toNativeSeparators(
        (folder.exists() ? folder : QDir::home()).filePath(loadText(text::PrintDocumentName) + u".pdf"_s));
}

} // namespace

PrintDialog::PrintDialog(QPrinter& printer, PrintRequest& request, QWidget* parent)
    : TemplateDialog(ids::Id, parent)
    , m_printer(printer)
    , m_request(request)
    , m_printers(comboBox(ids::Printer))
    , m_file(new QLineEdit(this))
    , m_browse(button(ids::Browse))
    , m_allRows(radioButton(ids::AllRows))
    , m_selection(radioButton(ids::Selection))
    , m_copies(new QSpinBox(this))
{
    m_file->setObjectName(QString::number(ids::File));
    m_copies->setObjectName(QString::number(ids::Copies));
    m_copies->setRange(1, MostCopies);
    for (const QString& name : QPrinterInfo::availablePrinterNames())
        m_printers->addItem(name, name);
    m_printers->addItem(caption(ids::PdfFile), QString());

    auto* const file = new QHBoxLayout;
    file->addWidget(m_file, 1);
    file->addWidget(m_browse);
    auto* const layout = new QFormLayout(this);
    layout->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    layout->addRow(label(ids::PrinterLabel, m_printers), m_printers);
    layout->addRow(label(ids::FileLabel, m_file), file);
    layout->addRow(makeRange());
    layout->addRow(label(ids::CopiesLabel, m_copies), m_copies);
    layout->addRow(closingButtons(ids::Ok, ids::Cancel));
    setMinimumWidth(SmallestWidth);
    connect(m_printers, &QComboBox::currentIndexChanged, this, [this] { enableFile(); });
    connect(m_browse, &QPushButton::clicked, this, [this] { OnBrowse(); });
    QWidget* previous = m_printers;
    for (QWidget* next :
        std::initializer_list<QWidget*>{m_file, m_browse, m_allRows, m_selection, m_copies}) {
        setTabOrder(previous, next);
        previous = next;
    }
    m_printers->setFocus();
}

QRadioButton* PrintDialog::radioButton(quint32 id)
{
    auto* const made = new QRadioButton(caption(id), this);
    made->setObjectName(QString::number(id));
    return made;
}

QGroupBox* PrintDialog::makeRange()
{
    QGroupBox* const range = groupBox(ids::RangeGroup);
    auto* const choices = new QVBoxLayout(range);
    choices->addWidget(m_allRows);
    choices->addWidget(m_selection);
    return range;
}

void PrintDialog::OnInitDialog()
{
    const bool isFile = m_printer.outputFormat() != QPrinter::NativeFormat;
    m_printers->setCurrentIndex(qMax(0, m_printers->findData(isFile ? QString() : m_printer.printerName())));
    m_file->setText(proposedFile(m_printer));
    m_allRows->setChecked(true);
    enableFile();
}

void PrintDialog::enableFile()
{
    const bool isFile = m_printers->currentData().toString().isEmpty();
    enable(*m_file, isFile);
    enable(*m_browse, isFile);
}

void PrintDialog::OnBrowse()
{
    const QString chosen
        = QFileDialog::getSaveFileName(this, windowTitle(), m_file->text(), u"PDF (*.pdf)"_s);
    if (chosen.isEmpty())
        return;
    m_confirmed = QDir::toNativeSeparators(chosen);
    m_file->setText(m_confirmed);
}

bool PrintDialog::mayReplace(const QString& file)
{
    if (file == m_confirmed || !QFileInfo(file).isFile())
        return true;
    return DialogPrompts(this).ask(loadText(text::ReplaceFile).replace(u"%s"_s, file));
}

void PrintDialog::accept()
{
    const QString name = m_printers->currentData().toString();
    if (name.isEmpty()) {
        if (m_file->text().isEmpty() || !mayReplace(m_file->text())) {
            m_file->setFocus();
            return;
        }
        m_printer.setOutputFormat(QPrinter::PdfFormat);
        m_printer.setOutputFileName(m_file->text());
    } else {
        m_printer.setOutputFileName({});
        m_printer.setOutputFormat(QPrinter::NativeFormat);
        m_printer.setPrinterName(name);
    }
    m_request.selectionOnly = m_selection->isChecked();
    m_request.copies = m_copies->value();
    TemplateDialog::accept();
}

} // namespace quoril
