#pragma once

#include "services/service_installation.h"
#include "services/template_dialog.h"

#include <optional>

namespace quoril {

class ServiceApp;

/// The choice between a new service of a product and an update of an installed one. The caller sets product,
/// configuration file, executable and operations before exec(); after it the dialog has always ended, and
/// ResultName is the name that the person went on with, whether that came to a service or not.
class UpdateOrInstallServiceDlg : public TemplateDialog
{
public:
    explicit UpdateOrInstallServiceDlg(QWidget* parent);

    QString ProductName; ///< as a person reads it, blanks allowed
    QString CfgFile; ///< full path on the machine
    bool IsUpdate = false; ///< which button was pressed
    QString ImagePath; ///< of the product's executable, with or without double quotes
    QString ResultName; ///< empty if the person left
    std::optional<InstallOutcome> Outcome; ///< what came of it; none if the person left
    ServiceApp* Installer = nullptr; ///< not owned

    /// Escape and the window's button are the way back, too.
    void reject() override { accept(); }

private:
    void OnInstall();
    void OnUpdate();
    template <typename Dialog> void goOn();
};

} // namespace quoril
