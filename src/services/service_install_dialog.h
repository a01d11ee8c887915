#pragma once

#include "services/template_dialog.h"

namespace quoril {

class ServiceApp;

/// Asks for the name of a new service and has the product's executable register it. Install ends the dialog
/// whatever came of it; only an empty name keeps it open.
class ServiceInstallDialog : public TemplateDialog
{
public:
    ServiceInstallDialog(const QString& productName, const QString& configurationFile, QWidget* parent);

    QString ImagePath; ///< of the product's executable, with or without double quotes
    ServiceApp* Installer = nullptr; ///< not owned; set before exec()

    QString serviceName() const;

    void accept() override;

private:
    /// The picker of the configuration file.
    void OnBrowse();

    QLineEdit* m_name;
    QLineEdit* m_configuration;
    QPushButton* m_install = nullptr;
};

} // namespace quoril
