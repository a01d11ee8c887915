#include "services/prompt_dialogs.h"

#include "platform/terminal_text.h"
#include "resources/resource_module.h"
#include "resources/text_ids.h"
#include "services/inform_dialog.h"
#include "services/remove_service_dialog.h"
#include "shell/wait_cursor_widget.h"

#include <QMessageBox>
#include <QPushButton>

namespace quoril {

namespace {

// The platform's numbers of the buttons of its message boxes.
constexpr int OkButton = 1;
constexpr int YesButton = 6;
constexpr int NoButton = 7;

class Box : public QMessageBox
{
public:
    Box(Icon icon, const QString& title, const QString& text, QWidget* parent)
        : QMessageBox(icon, title, shownText(text), QMessageBox::NoButton, parent)
    {
        // Names of services and paths are part of the text: nothing in it is markup.
        setTextFormat(Qt::PlainText);
    }

    QPushButton* add(int id, quint32 textId, ButtonRole role)
    {
        QPushButton* button = addButton(loadText(textId), role);
        button->setObjectName(QString::number(id));
        return button;
    }

private:
    ArrowCursor m_waits;
};

void showBox(QMessageBox::Icon icon, const QString& title, const QString& text, QWidget* parent)
{
    Box box(icon, title, text, parent);
    box.setEscapeButton(box.add(OkButton, text::Ok, QMessageBox::AcceptRole));
    box.exec();
}

} // namespace

void showErrorBox(QWidget* parent, const QString& text)
{
    showBox(QMessageBox::Critical, loadText(text::ErrorTitle), text, parent);
}

void DialogPrompts::inform(const QString& text, quint32 periodMilliseconds)
{
    InformDialog(text, periodMilliseconds, m_parent).exec();
}

void DialogPrompts::message(const QString& text)
{
    showBox(QMessageBox::Warning, loadText(text::ApplicationTitle), text, m_parent);
}

void DialogPrompts::success(const QString& text)
{
    showBox(QMessageBox::Information, loadText(text::ApplicationTitle), text, m_parent);
}

bool DialogPrompts::ask(const QString& question)
{
    Box box(QMessageBox::Question, loadText(text::ApplicationTitle), question, m_parent);
    const QPushButton* yes = box.add(YesButton, text::Yes, QMessageBox::YesRole);
    QPushButton* no = box.add(NoButton, text::No, QMessageBox::NoRole);
    box.setDefaultButton(no);
    box.setEscapeButton(no);
    box.exec();
    return box.clickedButton() == yes;
}

bool DialogPrompts::confirmRemoval(const QString& serviceName)
{
    return RemoveServiceDialog(serviceName, m_parent).exec() == QDialog::Accepted;
}

} // namespace quoril
