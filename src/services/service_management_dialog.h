#pragma once

#include "services/template_dialog.h"

#include <QTimer>

class QComboBox;

namespace quoril {

class ServiceInfo;

/// Starts and stops one service and changes its start type. A timer of four seconds keeps the shown status
/// fresh, also while a box is open.
///
/// A status that can't be read shows the error box on each tick, but never two at a time: while an error box
/// of this dialog stands, ticks only refresh, and behind a tick's box a whole period passes before the next
/// one, so that a lasting failure leaves the person time to act.
class ServiceManagementDialog : public TemplateDialog
{
public:
    /// The frame is the window behind, or null.
    explicit ServiceManagementDialog(QWidget* frame);

    /// The service to manage, which has to outlive the dialog. Called once, before exec().
    void SetService(ServiceInfo& service);

    void accept() override;
    void done(int result) override;

protected:
    void OnInitDialog() override;

private:
    void buildLayout();
    void connectControls();
    void OnTimer();
    void OnStart();
    void OnStop();
    void OnApply();
    void OnTypeSelected(int index);
    /// Shows Message if the status can't be read and the failure is to be reported.
    void refresh(bool reportFailure);
    void showStatus();
    void showFailure();

    QWidget* m_frame;
    ServiceInfo* m_service = nullptr;
    bool TypeChanged = false; ///< a start type is chosen and not yet applied
    qint32 NewStartType = 0;
    int m_errorBoxes = 0; ///< that stand now
    QTimer m_timer{this};

    QLineEdit* m_name;
    QLineEdit* m_description;
    QLineEdit* m_path;
    QComboBox* m_startType;
    QPushButton* m_apply;
    QPushButton* m_start;
    QPushButton* m_stop;
    QLabel* m_status;
};

} // namespace quoril
