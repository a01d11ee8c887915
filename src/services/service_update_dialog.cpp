#include "services/service_update_dialog.h"

#include "resources/text_ids.h"
#include "services/prompt_dialogs.h"
#include "services/service_app.h"
#include "shell/wait_cursor_widget.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace quoril {

namespace ids = update_dialog;

ServiceUpdateDialog::ServiceUpdateDialog(
    const QString& productName, const QString& configurationFile, QWidget* parent)
    : TemplateDialog(ids::Id, parent)
    , m_services(comboBox(ids::Services))
    , m_productName(productName)
    , m_configurationFile(configurationFile)
{
    QLineEdit* const product = disabledEdit(ids::Product);
    QLineEdit* const configuration = disabledEdit(ids::Configuration);
    showInEdit(*product, productName);
    showInEdit(*configuration, configurationFile);

    auto* layout = new QGridLayout(this);
    layout->setColumnStretch(1, 1);
    int row = 0;
    for (const auto& [labelId, field] :
        std::initializer_list<std::pair<quint32, QWidget*>>{{ids::ServicesLabel, m_services},
            {ids::ProductLabel, product}, {ids::ConfigurationLabel, configuration}}) {
        layout->addWidget(label(labelId, field), row, 0);
        layout->addWidget(field, row++, 1);
    }
    layout->setRowStretch(row++, 1);
    layout->addWidget(closingButtons(ids::Update, ids::Cancel, EnterMeans::Reject), row, 0, 1, 2);
    m_services->setFocus();
}

QString ServiceUpdateDialog::serviceName() const
{
    return m_services->currentText();
}

int ServiceUpdateDialog::ListProductServices(const QString& productName)
{
    QStringList names;
    const int listed = Installer->ListProductServices(productName, names);
    m_services->addItems(names);
    return listed;
}

void ServiceUpdateDialog::OnInitDialog()
{
    m_services->clear();
    (void)ListProductServices(m_productName);
    if (m_services->count() == 0)
        enable(*findChild<QPushButton*>(QString::number(ids::Update)), false);
    else
        m_services->setCurrentIndex(0);
}

void ServiceUpdateDialog::accept()
{
    DialogPrompts prompts(this);
    if (serviceName().isEmpty()) {
        prompts.message(loadText(text::EnterServiceName));
        return;
    }
    const WaitCursor waiting;
    Outcome = Installer->InstallService({serviceName(), m_configurationFile, true, ImagePath}, prompts);
    TemplateDialog::accept();
}

} // namespace quoril
