#pragma once

#include "services/user_prompts.h"

namespace quoril {

class Console;

/// Reports and asks on the error stream. Nothing is held up for the time of an information box, since nobody
/// has to read it before it goes.
class ConsolePrompts : public UserPrompts
{
public:
    explicit ConsolePrompts(Console& console) : m_console(console) { }

    void inform(const QString& text, quint32 periodMilliseconds) override;
    void message(const QString& text) override;
    /// No without a terminal.
    bool ask(const QString& question) override;
    bool isWatched() const override { return false; }
    /// Names the service; the question that follows is the one to answer.
    bool confirmRemoval(const QString& serviceName) override;

private:
    Console& m_console;
};

} // namespace quoril
