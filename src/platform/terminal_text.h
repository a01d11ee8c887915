#pragma once

#include <QString>
#include <QStringView>

namespace quoril {

/// The text as a terminal may get it: every unit that could command the terminal or change the order of what
/// is shown - control and format characters, the marks of writing direction among them, line separators,
/// halves of a surrogate pair - stands as an escape of JSON ("\u001b", "\n"). The rest is unchanged, and so
/// is the text of a valid JSON document in its meaning.
QString terminalText(QStringView text);

/// The same for a window, which breaks lines and has tabs: those stay.
QString shownText(QStringView text);

} // namespace quoril
