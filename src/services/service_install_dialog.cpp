#include "services/service_install_dialog.h"

#include "platform/files.h"
#include "platform/machine.h"
#include "resources/file_filters.h"
#include "resources/text_ids.h"
#include "services/prompt_dialogs.h"
#include "services/service_app.h"
#include "shell/wait_cursor_widget.h"

#include <QDialogButtonBox>
#include <QFileDialog>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace quoril {

using namespace Qt::StringLiterals;

namespace ids = install_dialog;

ServiceInstallDialog::ServiceInstallDialog(
    const QString& productName, const QString& configurationFile, QWidget* parent)
    : TemplateDialog(ids::Id, parent)
    , m_name(new QLineEdit(this))
    , m_configuration(disabledEdit(ids::Configuration))
{
    m_name->setObjectName(QString::number(ids::Name));
    QLineEdit* product = disabledEdit(ids::Product);
    showInEdit(*product, productName);
    showConfiguration(configurationFile);
    QPushButton* browse = button(ids::Browse);

    auto* layout = new QGridLayout(this);
    layout->setColumnStretch(1, 1);
    layout->addWidget(label(ids::NameLabel, m_name), 0, 0);
    layout->addWidget(m_name, 0, 1, 1, 2);
    layout->addWidget(label(ids::ProductLabel, product), 1, 0);
    layout->addWidget(product, 1, 1, 1, 2);
    layout->addWidget(label(ids::ConfigurationLabel, m_configuration), 2, 0);
    layout->addWidget(m_configuration, 2, 1);
    layout->addWidget(browse, 2, 2);
    layout->setRowStretch(3, 1);
    layout->addWidget(closingButtons(ids::Install, ids::Cancel), 4, 0, 1, 3);
    m_install = findChild<QPushButton*>(QString::number(ids::Install));
    connect(browse, &QPushButton::clicked, this, &ServiceInstallDialog::OnBrowse);
    m_name->setFocus();
}

QString ServiceInstallDialog::serviceName() const
{
    return m_name->text();
}

void ServiceInstallDialog::accept()
{
    DialogPrompts prompts(this);
    if (serviceName().isEmpty()) {
        prompts.message(loadText(text::EnterServiceName));
        m_name->setFocus();
        return;
    }
    const WaitCursor waiting;
    Outcome = Installer->InstallService({serviceName(), m_configurationFile, false, ImagePath}, prompts);
    TemplateDialog::accept();
}

void ServiceInstallDialog::showConfiguration(const QString& path)
{
    m_configurationFile = path;
    showInEdit(*m_configuration, path);
}

void ServiceInstallDialog::OnBrowse()
{
    Files& files = machine().files();
    auto folder = files.hostPath(m_configurationFile.section(u'\\', 0, -2) + u'\\');
    if (!folder)
        folder = files.hostPath(u"C:\\");
    QFileDialog picker(this, loadText(text::OpenConfigurationTitle), folder ? *folder : QString());
    picker.setFileMode(QFileDialog::ExistingFile);
    picker.setOption(QFileDialog::HideNameFilterDetails);
    picker.setNameFilters(fileFilters(loadText(text::ConfigurationFilter)));
    if (picker.exec() != Accepted)
        return;
    const QString chosen = picker.selectedFiles().value(0);
    const auto path = files.machinePath(chosen);
    if (!path) {
        DialogPrompts(this).message(loadText(text::FileOutsideMachine).replace(u"%s"_s, chosen));
        return;
    }
    showConfiguration(*path);
    m_install->setEnabled(true);
}

} // namespace quoril
