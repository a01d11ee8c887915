#pragma once

#include <QString>

namespace quoril {

/// The English text that Windows has for an error number, its CR LF included; empty for one that it gives no
/// text for without inserts, and for a number that is not in the table.
QString windowsMessage(quint32 number);

} // namespace quoril
