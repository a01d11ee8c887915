#pragma once

#include <QString>
#include <QStringView>

namespace quoril {

/// Host path of the desktop's own program that does what the named program of the system does ("perfmon.exe":
/// the system monitor); empty if none is installed or the name is not known.
QString desktopProgram(QStringView systemProgram);

} // namespace quoril
