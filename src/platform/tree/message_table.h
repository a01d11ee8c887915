#pragma once

#include <QString>

namespace quoril {

/// The English text that Windows has for an error number, its CR LF included; empty for a number that is not
/// in the table.
QString windowsMessage(quint32 number);

} // namespace quoril
