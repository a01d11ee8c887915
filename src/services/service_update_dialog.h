#pragma once

#include "services/service_installation.h"
#include "services/template_dialog.h"

#include <optional>

class QComboBox;

namespace quoril {

class ServiceApp;

/// Chooses one of the product's installed services, which is removed and installed anew under its name.
/// Update ends the dialog whatever came of it; it is disabled where the product has no service.
class ServiceUpdateDialog : public TemplateDialog
{
public:
    ServiceUpdateDialog(const QString& productName, const QString& configurationFile, QWidget* parent);

    QString ImagePath; ///< of the product's executable, with or without double quotes
    ServiceApp* Installer = nullptr; ///< not owned; set before exec()
    std::optional<InstallOutcome> Outcome; ///< none as long as nothing was asked of the installer

    QString serviceName() const;
    /// Fills the list; 0, or -1 if the services can't be walked.
    int ListProductServices(const QString& productName);

    void accept() override;

protected:
    void OnInitDialog() override;

private:
    QComboBox* m_services;
    QString m_productName;
    QString m_configurationFile; ///< a path of the machine
};

} // namespace quoril
