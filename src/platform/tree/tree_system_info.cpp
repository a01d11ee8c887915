#include "platform/tree/tree_system_info.h"

#include "platform/host/host_system.h"
#include "platform/registry.h"
#include "platform/tree/message_table.h"
#include "platform/tree/tree_system_version.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QStandardPaths>

namespace quoril {

Result<QString> TreeSystemInfo::computerName() const
{
    constexpr qsizetype limitBytes = 1024;
    const Result<RegistryKeyHandle> localMachine = m_registry.localMachine();
    if (!localMachine)
        return localMachine.failure();
    // The active name is volatile; a file has it only where the system was not shut down.
    Result<QString> name = Error{error::FileNotFound, {}};
    for (const QStringView key : {u"ActiveComputerName", u"ComputerName"}) {
        const QString path
            = QStringView(u"SYSTEM\\CurrentControlSet\\Control\\ComputerName\\").toString().append(key);
        const Result<RegistryKeyHandle> opened = openPath(**localMachine, path, key_access::QueryValue);
        name = opened ? (*opened)->text(u"ComputerName", limitBytes) : Result<QString>(opened.failure());
        if (name)
            break;
    }
    return name;
}

Result<SystemVersion> TreeSystemInfo::version() const
{
    const Result<RegistryKeyHandle> localMachine = m_registry.localMachine();
    return localMachine ? readSystemVersion(**localMachine) : Result<SystemVersion>(localMachine.failure());
}

ProcessorInfo TreeSystemInfo::processors() const
{
    const Result<RegistryKeyHandle> localMachine = m_registry.localMachine();
    return localMachine ? readProcessors(**localMachine) : ProcessorInfo();
}

Result<quint64> TreeSystemInfo::physicalMemory() const
{
    return hostMemory();
}

QString TreeSystemInfo::windowsDirectory() const
{
    return QStringLiteral("C:\\Windows");
}

Result<QString> TreeSystemInfo::programVersion(const QString& hostPath) const
{
    // A name without a folder is what a shell or a launcher found on its search path.
    const bool isBareName = QFileInfo(hostPath).fileName() == hostPath;
    const QFileInfo asked(isBareName ? QStandardPaths::findExecutable(hostPath) : hostPath);
    if (!asked.exists())
        return Error{error::FileNotFound, hostPath};
    if (asked.canonicalFilePath() != QFileInfo(QCoreApplication::applicationFilePath()).canonicalFilePath())
        return Error{error::ResourceTypeNotFound, hostPath};
    return QStringLiteral(QUORIL_VERSION);
}

QString TreeSystemInfo::errorText(quint32 number) const
{
    return windowsMessage(number);
}

} // namespace quoril
