#pragma once

#include "services/template_dialog.h"
#include "shell/wait_cursor_widget.h"

#include <QTimer>

#include <optional>

namespace quoril {

/// The box that stands wherever a step takes time: it shows its text for a period and "Ready" for a second,
/// and closes itself. Messages are pumped during the period and not during the last second, which also keeps
/// an operator from acting on a state that is about to be read. Enter and Escape end it earlier.
class InformDialog : public TemplateDialog
{
public:
    InformDialog(const QString& text, quint32 periodMilliseconds, QWidget* parent);

    void done(int result) override;

protected:
    void OnInitDialog() override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void OnTimer();

    quint32 m_period;
    QLabel* m_text;
    QTimer m_timer;
    std::optional<WaitCursor> m_waiting;
};

} // namespace quoril
