#include "report/problem_report.h"

#include "platform/files.h"
#include "platform/machine.h"
#include "report/attachment_file.h"
#include "services/service_info.h"

#include <QCoreApplication>
#include <QStringBuilder>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

struct SummaryLine
{
    QStringView label; ///< fixed, whatever the language of the windows
    QString ServiceInfo::*value;
    bool isAlwaysShown;
};

constexpr SummaryLine SummaryLines[] = {
    {u"Emulation type", &ServiceInfo::EmulationType, true},
    {u"Home directory", &ServiceInfo::HomeDir, true},
    {u"CPU (dynamic instruction translation)", &ServiceInfo::AceEnable, false},
    {u"RAM size", &ServiceInfo::RamSize, false},
    {u"ROM", &ServiceInfo::RomContainer, false},
    {u"TOY", &ServiceInfo::ToyContainer, false},
};

/// The running program by its path on the machine, or on the host where it lies outside the machine.
QString ownProgram()
{
    const QString hostPath = QCoreApplication::applicationFilePath();
    const auto path = machine().files().machinePath(hostPath);
    return path ? *path : hostPath;
}

} // namespace

QString configSummary(const ServiceInfo& service)
{
    constexpr qsizetype LabelColumns = 40;
    QString summary = LineEnd.toString();
    for (const SummaryLine& line : SummaryLines) {
        const QString& value = service.*line.value;
        if (line.isAlwaysShown || !value.isEmpty())
            summary += line.label.toString().leftJustified(LabelColumns) % u' ' % value % LineEnd;
    }
    return summary % LineEnd % LineEnd;
}

bool mailProblemReport(
    const ServiceInfo& service, UserPrompts& prompts, appMAPI::AskFileName askFileName, ReportRequest request)
{
    appMAPI report(prompts, std::move(askFileName));
    QuorilMAPIData data;
    data.TempPrefix = u"OperatorConsole"_s;
    data.LogFrom = service.LogFrom;
    data.LogTo = service.LogTo;

    data.ExecutablesWanted = request.describesExecutables;
    if (request.describesExecutables)
        data.GuiExecutablePath = ownProgram();
    data.ExecutablePath = service.ImagePath;
    report.WriteHardwareSection(data);

    data.ServiceName = service.Name;
    data.ConfigSummary = configSummary(service);
    report.WriteRegistrySection(data);

    data.LogFileName = service.LogFile;
    report.WriteLogSections(data);

    const bool hasAllParts = data.HardwareReady && data.RegistryReady && data.LogReady;
    report.SaveReport(data);
    if (request.removesLeftovers)
        appMAPI::removeAttachments(data);
    return hasAllParts && report.ErrorText.isEmpty();
}

} // namespace quoril
