#include "ctl/console_prompts.h"

#include "ctl/console.h"
#include "resources/resource_module.h"
#include "resources/text_ids.h"

namespace quoril {

void ConsolePrompts::inform(const QString& text, quint32)
{
    m_console.report(text, LineStyle::Plain);
}

void ConsolePrompts::message(const QString& text)
{
    m_console.report(text, LineStyle::Plain);
}

bool ConsolePrompts::ask(const QString& question)
{
    return m_console.ask(question);
}

bool ConsolePrompts::confirmRemoval(const QString& serviceName)
{
    const QString label = activeResources().dialog(remove_dialog::Id).caption(remove_dialog::NameLabel);
    m_console.subject(label + u' ' + serviceName);
    return true;
}

} // namespace quoril
