#include "services/template_dialog.h"

#include "shell/wait_cursor_widget.h"

#include <QAccessible>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace quoril {

TemplateDialog::TemplateDialog(quint32 templateId, QWidget* parent)
    : QDialog(parent)
    , m_template(activeResources().dialog(templateId))
{
    setWindowTitle(m_template.title);
    setModal(true);
    setProperty(HelpTopicProperty, QString(QStringLiteral("#dialog-") + QString::number(templateId)));
}

int TemplateDialog::exec()
{
    const ArrowCursor waits;
    OnInitDialog();
    return QDialog::exec();
}

QLabel* TemplateDialog::label(quint32 id, QWidget* described)
{
    auto* made = new QLabel(caption(id), this);
    made->setObjectName(QString::number(id));
    made->setTextFormat(Qt::PlainText);
    made->setBuddy(described);
    return made;
}

QLineEdit* TemplateDialog::readOnlyEdit(quint32 id)
{
    // Long texts such as paths are scrolled in; this many characters are always seen.
    constexpr int shownCharacters = 52;
    auto* made = new QLineEdit(this);
    made->setObjectName(QString::number(id));
    made->setReadOnly(true);
    // On the ground of the dialog it is plain that there is nothing to type into.
    QPalette palette = made->palette();
    palette.setColor(QPalette::Base, palette.color(QPalette::Window));
    made->setPalette(palette);
    made->setMinimumWidth(made->fontMetrics().averageCharWidth() * shownCharacters);
    return made;
}

QLineEdit* TemplateDialog::disabledEdit(quint32 id)
{
    QLineEdit* made = readOnlyEdit(id);
    QPalette palette = made->palette();
    palette.setColor(QPalette::Disabled, QPalette::Text, palette.color(QPalette::Active, QPalette::Text));
    made->setPalette(palette);
    made->setEnabled(false);
    return made;
}

QComboBox* TemplateDialog::comboBox(quint32 id)
{
    auto* made = new QComboBox(this);
    made->setObjectName(QString::number(id));
    return made;
}

void TemplateDialog::enable(QWidget& control, bool enabled)
{
    // The toolkit would move the focus to the next control, where a key that was meant for this one acts.
    if (!enabled && focusWidget() == &control && m_default)
        m_default->setFocus();
    control.setEnabled(enabled);
}

QPushButton* TemplateDialog::button(quint32 id)
{
    auto* made = new QPushButton(caption(id), this);
    made->setObjectName(QString::number(id));
    made->setAutoDefault(false);
    return made;
}

QGroupBox* TemplateDialog::groupBox(quint32 id)
{
    auto* made = new QGroupBox(caption(id), this);
    made->setObjectName(QString::number(id));
    return made;
}

QDialogButtonBox* TemplateDialog::closingButtons(quint32 accepting, quint32 rejecting, EnterMeans enter)
{
    auto* box = new QDialogButtonBox(this);
    QPushButton* accept = button(accepting);
    QPushButton* reject = button(rejecting);
    box->addButton(accept, QDialogButtonBox::AcceptRole);
    box->addButton(reject, QDialogButtonBox::RejectRole);
    accept->setAutoDefault(true);
    reject->setAutoDefault(true);
    m_default = enter == EnterMeans::Accept ? accept : reject;
    m_default->setDefault(true);
    connect(box, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(box, &QDialogButtonBox::rejected, this, &QDialog::reject);
    return box;
}

void announceText(QLabel& label)
{
    QAccessibleEvent spoken(&label, QAccessible::Alert);
    QAccessible::updateAccessibility(&spoken);
}

void showInEdit(QLineEdit& edit, const QString& text)
{
    edit.setText(text);
    edit.setCursorPosition(0);
    edit.setToolTip(text.toHtmlEscaped());
}

} // namespace quoril
