#pragma once

#include <QString>

class QWidget;

namespace quoril {

/// A message box of a code of the console's own: severity 1 message, 2 warning, 3 error. An empty text shows
/// nothing.
void ShowCodedMessage(const QString& codeText, const QString& text, int severity, QWidget* parent = nullptr);

} // namespace quoril
