#pragma once

#include <QString>
#include <QStringList>

namespace quoril {

/// The filters of a file dialog from a text of the form "Name|pattern|Name|pattern|", as the toolkit takes
/// them when it hides what stands in the last brackets. "*.*" means every file, also one without an
/// extension.
QStringList fileFilters(const QString& text);

} // namespace quoril
