#include "report/problem_report.h"

#include "report/attachment_file.h"
#include "shell/service_info.h"

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

bool mailProblemReport(const ServiceInfo& service, UserPrompts& prompts, appMAPI::AskFileName askFileName,
    bool executablesWanted)
{
    appMAPI report(prompts, std::move(askFileName));
    QuorilMAPIData data;
    data.TempPrefix = u"OperatorConsole"_s;
    data.LogFrom = service.LogFrom;
    data.LogTo = service.LogTo;

    data.ExecutablesWanted = executablesWanted;
    data.ExecutablePath = service.ImagePath;
    report.WriteHardwareSection(data);

    data.ServiceName = service.Name;
    data.ConfigSummary = configSummary(service);
    report.WriteRegistrySection(data);

    data.LogFileName = service.LogFile;
    report.WriteLogSections(data);

    report.SaveReport(data);
    return report.ErrorText.isEmpty();
}

} // namespace quoril
