#pragma once

#include <QString>

class QWidget;

namespace quoril {

/// Asks for the file of the problem report over the window. The host path; empty if the person gave up. That
/// a file of the name exists raises no question.
QString askReportFile(QWidget* parent, const QString& proposedName);

} // namespace quoril
