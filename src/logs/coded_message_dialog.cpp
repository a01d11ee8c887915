#include "logs/coded_message_dialog.h"

#include "logs/log_table.h"
#include "services/prompt_dialogs.h"

namespace quoril {

void ShowCodedMessage(const QString& codeText, const QString& text, int severity, QWidget* parent)
{
    if (!text.isEmpty())
        DialogPrompts(parent).message(codedMessageText(codeText, text, severity));
}

} // namespace quoril
