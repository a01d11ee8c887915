#pragma once

#include "services/user_prompts.h"

#include <QString>

class QWidget;

namespace quoril {

/// The message box of a failure: the title "Error", the stop icon, an OK button.
void showErrorBox(QWidget* parent, const QString& text);

/// Reports and asks in real boxes over a window. Message boxes and questions carry the application's title; a
/// question answers No by Enter and Escape, since it guards what can't be undone.
class DialogPrompts : public UserPrompts
{
public:
    /// The window has to outlive the prompts; without one the boxes stand alone.
    explicit DialogPrompts(QWidget* parent) : m_parent(parent) { }

    void inform(const QString& text, quint32 periodMilliseconds) override;
    void message(const QString& text) override;
    void success(const QString& text) override;
    bool ask(const QString& question) override;
    bool confirmRemoval(const QString& serviceName) override;

private:
    QWidget* m_parent;
};

} // namespace quoril
