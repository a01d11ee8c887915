#pragma once

#include "services/service_installation.h"
#include "services/template_dialog.h"

#include <optional>

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
    std::optional<InstallOutcome> Outcome; ///< none as long as nothing was asked of the installer

    QString serviceName() const;

    void accept() override;

private:
    /// The picker of the configuration file.
    void OnBrowse();

    void showConfiguration(const QString& path);

    QLineEdit* m_name;
    QLineEdit* m_configuration;
    QString m_configurationFile; ///< a path of the machine
    QPushButton* m_install = nullptr;
};

} // namespace quoril
