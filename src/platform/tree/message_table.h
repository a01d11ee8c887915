#pragma once

#include <QString>

namespace quoril {

/// The English text that Windows has for an error number, its CR LF included; empty for one that it gives no
/// text for without inserts, and for a number that is not in the table.
QString windowsMessage(quint32 number);

/// The same on one line with the number in hexadecimal after it; the number alone where there is no text.
QString numberedWindowsMessage(quint32 number);

} // namespace quoril
