#include "printing/print_setup_dialog.h"

#include "resources/text_ids.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QPrinter>
#include <QPrinterInfo>

namespace quoril {

namespace ids = print_setup_dialog;

namespace {

constexpr int SmallestWidth = 360;

/// The paper of the printer; what most offices have where it is a file.
QList<QPageSize> paperOf(const QString& printer)
{
    const QList<QPageSize> known = QPrinterInfo::printerInfo(printer).supportedPageSizes();
    if (!known.isEmpty())
        return known;
    QList<QPageSize> usual;
    for (const auto id : {QPageSize::A4, QPageSize::A3, QPageSize::A5, QPageSize::Letter, QPageSize::Legal})
        usual.append(QPageSize(id));
    return usual;
}

} // namespace

PrintSetupDialog::PrintSetupDialog(QPrinter& printer, QWidget* parent)
    : TemplateDialog(ids::Id, parent)
    , m_printer(printer)
    , m_printers(comboBox(ids::Printer))
    , m_paper(comboBox(ids::Paper))
    , m_orientation(comboBox(ids::Orientation))
{
    for (const QString& name : QPrinterInfo::availablePrinterNames())
        m_printers->addItem(name, name);
    if (PdfFileIsPrinter)
        m_printers->addItem(caption(ids::PdfFile), QString());
    m_orientation->addItem(caption(ids::Portrait), int(QPageLayout::Portrait));
    m_orientation->addItem(caption(ids::Landscape), int(QPageLayout::Landscape));

    auto* layout = new QFormLayout(this);
    layout->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    layout->addRow(label(ids::PrinterLabel, m_printers), m_printers);
    layout->addRow(label(ids::PaperLabel, m_paper), m_paper);
    layout->addRow(label(ids::OrientationLabel, m_orientation), m_orientation);
    layout->addRow(closingButtons(ids::Ok, ids::Cancel));
    setMinimumWidth(SmallestWidth);
    connect(m_printers, &QComboBox::currentIndexChanged, this, [this] { listPaper(); });
    m_printers->setFocus();
}

void PrintSetupDialog::OnInitDialog()
{
    const bool isFile = m_printer.outputFormat() != QPrinter::NativeFormat;
    m_printers->setCurrentIndex(qMax(0, m_printers->findData(isFile ? QString() : m_printer.printerName())));
    listPaper();
    m_orientation->setCurrentIndex(m_orientation->findData(int(m_printer.pageLayout().orientation())));
}

void PrintSetupDialog::listPaper()
{
    const QVariant chosen = m_paper->count() > 0 ? m_paper->currentData()
                                                 : QVariant::fromValue(m_printer.pageLayout().pageSize());
    m_paper->clear();
    for (const QPageSize& size : paperOf(m_printers->currentData().toString())) {
        m_paper->addItem(size.name(), QVariant::fromValue(size));
        if (size.isEquivalentTo(chosen.value<QPageSize>()))
            m_paper->setCurrentIndex(m_paper->count() - 1);
    }
}

void PrintSetupDialog::accept()
{
    const QString name = m_printers->currentData().toString();
    if (name.isEmpty()) {
        m_printer.setOutputFormat(QPrinter::PdfFormat);
    } else {
        m_printer.setOutputFileName({});
        m_printer.setOutputFormat(QPrinter::NativeFormat);
        m_printer.setPrinterName(name);
    }
    m_printer.setPageSize(m_paper->currentData().value<QPageSize>());
    m_printer.setPageOrientation(QPageLayout::Orientation(m_orientation->currentData().toInt()));
    TemplateDialog::accept();
}

} // namespace quoril
