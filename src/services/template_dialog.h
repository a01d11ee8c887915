#pragma once

#include "resources/resource_module.h"

#include <QDialog>

class QComboBox;
class QDialogButtonBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace quoril {

/// The property of a dialog that holds the link to its topic in the help, "#dialog-130".
inline constexpr const char* HelpTopicProperty = "helpTopic";

/// A modal dialog with the texts of a dialog template: its title, and controls that are named by their
/// numbers
/// ("1021") and captioned by the template. The controls are children of the dialog.
class TemplateDialog : public QDialog
{
public:
    /// Sets the dialog up as it is to be seen first, then shows it until it ends.
    int exec() override;

protected:
    TemplateDialog(quint32 templateId, QWidget* parent);

    /// Runs before the dialog is seen.
    virtual void OnInitDialog() { }

    QString caption(quint32 id) const { return m_template.caption(id); }

    /// A caption beside the control that it describes, for assistive tools too.
    QLabel* label(quint32 id, QWidget* described);
    /// One line of text that can be selected and copied but not changed.
    QLineEdit* readOnlyEdit(quint32 id);
    /// The same for what is only shown: it can't be entered either, and stays as legible.
    QLineEdit* disabledEdit(quint32 id);
    /// A list to choose from, which nothing can be typed into.
    QComboBox* comboBox(quint32 id);
    /// A button that acts while the dialog stays open: Space presses it, and it is never the one for Enter.
    QPushButton* button(quint32 id);
    QGroupBox* groupBox(quint32 id);
    /// What Enter does where the person has not moved the focus to a closing button.
    enum class EnterMeans
    {
        Accept,
        Reject ///< for what can't be undone
    };
    /// The closing buttons in the platform's order: the first accepts the dialog, the other rejects it.
    QDialogButtonBox* closingButtons(
        quint32 accepting, quint32 rejecting, EnterMeans enter = EnterMeans::Accept);
    /// Enables or disables the control; a disabled one leaves its focus to the closing button for Enter.
    void enable(QWidget& control, bool enabled);

private:
    DialogTemplate m_template;
    QPushButton* m_default = nullptr;
};

/// Has assistive tools say what the label shows, though it has not the focus.
void announceText(QLabel& label);

/// Puts a text into an edit so that its beginning is seen and the whole of it is in the tooltip.
void showInEdit(QLineEdit& edit, const QString& text);

} // namespace quoril
