#include "platform/host/desktop_programs.h"

#include "formats/name_case.h"

#include <QStandardPaths>

#include <array>

namespace quoril {

QString desktopProgram(QStringView systemProgram)
{
    static constexpr std::array<QStringView, 7> systemMonitors
        = {u"gnome-system-monitor", u"plasma-systemmonitor", u"ksysguard", u"mate-system-monitor",
            u"xfce4-taskmanager", u"lxtask", u"lxqt-system-monitor"};
    if (!foldedEquals(systemProgram, u"perfmon.exe"))
        return {};
    for (const QStringView name : systemMonitors) {
        const QString path = QStandardPaths::findExecutable(name.toString());
        if (!path.isEmpty())
            return path;
    }
    return {};
}

} // namespace quoril
