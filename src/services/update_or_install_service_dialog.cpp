#include "services/update_or_install_service_dialog.h"

#include "resources/text_ids.h"
#include "services/service_install_dialog.h"
#include "services/service_update_dialog.h"

#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace quoril {

namespace ids = update_or_install_dialog;

UpdateOrInstallServiceDlg::UpdateOrInstallServiceDlg(QWidget* parent) : TemplateDialog(ids::Id, parent)
{
    QPushButton* update = button(ids::Update);
    QPushButton* install = button(ids::Install);
    QPushButton* leave = button(ids::Return);
    QPushButton* cancel = button(ids::Cancel);
    cancel->setVisible(false);
    cancel->setEnabled(false);

    QGroupBox* group = groupBox(ids::DetectedGroup);
    auto* choice = new QVBoxLayout(group);
    choice->addWidget(label(ids::ChooseLabel, update));
    choice->addWidget(update);
    choice->addWidget(install);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(group);
    layout->addStretch();
    layout->addWidget(leave, 0, Qt::AlignRight);

    // Each of them ends this dialog: Enter presses the one that the person has moved the focus to.
    for (QPushButton* const road : {update, install, leave})
        road->setAutoDefault(true);
    leave->setDefault(true);
    leave->setFocus();
    setTabOrder(update, install);
    setTabOrder(install, leave);
    connect(update, &QPushButton::clicked, this, &UpdateOrInstallServiceDlg::OnUpdate);
    connect(install, &QPushButton::clicked, this, &UpdateOrInstallServiceDlg::OnInstall);
    connect(leave, &QPushButton::clicked, this, &QDialog::accept);
}

template <typename Dialog> void UpdateOrInstallServiceDlg::goOn()
{
    Dialog dialog(ProductName, CfgFile, this);
    dialog.ImagePath = ImagePath;
    dialog.Installer = Installer;
    if (dialog.exec() == Accepted)
        ResultName = dialog.serviceName();
    Outcome = dialog.Outcome;
    accept();
}

void UpdateOrInstallServiceDlg::OnInstall()
{
    IsUpdate = false;
    goOn<ServiceInstallDialog>();
}

void UpdateOrInstallServiceDlg::OnUpdate()
{
    IsUpdate = true;
    goOn<ServiceUpdateDialog>();
}

} // namespace quoril
