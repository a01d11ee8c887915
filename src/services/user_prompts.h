#pragma once

#include <QString>

namespace quoril {

/// What an operation without a window says or asks the person. The window shows boxes, the command-line
/// program prints, a test records and answers.
class UserPrompts
{
public:
    virtual ~UserPrompts() = default;

    /// The timed information box: stands for the period and one second of "Ready", then closes itself.
    virtual void inform(const QString& text, quint32 periodMilliseconds) = 0;

    /// A message box with an OK button under the application's title.
    virtual void message(const QString& text) = 0;

    /// The same for what went well.
    virtual void success(const QString& text) { message(text); }

    /// A question with the buttons Yes and No; true for Yes.
    virtual bool ask(const QString& question) = 0;

    /// Whether somebody watches who could end a window that holds an announcement up.
    virtual bool isWatched() const { return true; }

    /// The dialog that names the service to be removed; true if the person pressed Remove.
    virtual bool confirmRemoval(const QString& serviceName) = 0;
};

} // namespace quoril
