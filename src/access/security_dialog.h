#pragma once

#include "services/template_dialog.h"

class QComboBox;

namespace quoril {

/// The choice of the idle time after which the workstation is locked.
class SecurityDialog : public TemplateDialog
{
    Q_OBJECT

public:
    explicit SecurityDialog(QWidget* parent = nullptr);

    /// The idle time in milliseconds, one of g_lock_choices: set before the dialog runs, the chosen one after
    /// it ended with OK.
    quint32 m_lock_time = 0;

    void accept() override;

protected:
    void OnInitDialog() override;

private:
    QComboBox* m_choices;
};

} // namespace quoril
