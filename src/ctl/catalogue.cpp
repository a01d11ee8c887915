// list, show, status.

#include "config/configuration_table.h"
#include "ctl/instances.h"
#include "ctl/output.h"
#include "ctl/progress.h"
#include "ctl/subcommand.h"

#include <QJsonArray>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

struct ListOptions
{
    bool namesOnly = false;
};

void declareList(const CommandParser& parser, ListOptions& options)
{
    parser.addFlag("--names", options.namesOnly, "Print only the names, one per line");
}

int list(Ctl& ctl, const ListOptions& options)
{
    Instances instances;
    {
        const Progress progress(ctl.console, u"Reading the registry..."_s);
        if (!instances.read(ctl))
            return exit_code::Failed;
    }
    if (ctl.json) {
        JsonArray array(ctl.console);
        for (const ServiceInfo& service : instances.all())
            array.add({{"name"_L1, service.Name}, {"displayName"_L1, service.DisplayName},
                {"emulationType"_L1, service.EmulationType}, {"homeDirectory"_L1, service.HomeDir}});
        return exit_code::Done;
    }
    if (options.namesOnly) {
        for (const ServiceInfo& service : instances.all())
            ctl.console.line(service.Name);
        return exit_code::Done;
    }
    TextTable table({u"NAME"_s, u"EMULATION TYPE"_s, u"DISPLAY NAME"_s});
    for (const ServiceInfo& service : instances.all())
        table.add({service.Name, service.EmulationType, service.DisplayName});
    table.print(ctl.console);
    return exit_code::Done;
}

struct NameOptions
{
    QString name;
};

void declareName(const CommandParser& parser, NameOptions& options)
{
    parser.addText("name", options.name, "Name of the instance").required().valueName("NAME");
}

int show(Ctl& ctl, const NameOptions& options)
{
    Instances instances;
    if (!instances.read(ctl, CatalogueScan::Full))
        return exit_code::Failed;
    const ServiceInfo* const service = instances.find(ctl, options.name);
    if (!service)
        return exit_code::Failed;
    const QStringList prerequisites = prerequisitesOf(*service);
    const PanelTable configuration = buildConfigurationTable(*service);
    if (ctl.json) {
        QJsonArray rows;
        for (qsizetype row = 0; row < configuration.rowCount(); ++row)
            rows.append(QJsonObject{
                {"component"_L1, configuration.text(row, 0)}, {"value"_L1, configuration.text(row, 1)}});
        printJson(ctl.console,
            {{"name"_L1, service->Name}, {"displayName"_L1, service->DisplayName},
                {"emulationType"_L1, service->EmulationType}, {"homeDirectory"_L1, service->HomeDir},
                {"imagePath"_L1, service->ImagePath}, {"logFile"_L1, service->LogFile},
                {"prerequisites"_L1, QJsonArray::fromStringList(prerequisites)}, {"configuration"_L1, rows}});
        return exit_code::Done;
    }
    TextTable table({u"COMPONENT"_s, u"VALUE"_s});
    table.add({u"Name"_s, service->Name});
    table.add({u"Display name"_s, service->DisplayName});
    table.add({u"Executable"_s, service->ImagePath});
    table.add({u"Log file"_s, service->LogFile});
    table.add({u"Prerequisites"_s, prerequisites.join(u", "_s)});
    for (qsizetype row = 0; row < configuration.rowCount(); ++row)
        table.add({configuration.text(row, 0), configuration.text(row, 1)});
    table.print(ctl.console);
    return exit_code::Done;
}

struct StatusOptions
{
    QStringList names;
};

void declareStatus(const CommandParser& parser, StatusOptions& options)
{
    parser.addTexts("names", options.names, "Names of instances; without one, all").valueName("NAME");
}

int status(Ctl& ctl, const StatusOptions& options)
{
    Instances instances;
    if (!instances.read(ctl))
        return exit_code::Failed;
    const auto services = instances.select(ctl, options.names);
    return services ? printStatus(ctl, *services, options.names.size() == 1) : exit_code::Failed;
}

} // namespace

void addCatalogueSubcommands(Ctl& ctl, const CommandParser& parser)
{
    addSubcommand(ctl, parser, "list", "List the instances", Needs::Machine, declareList, list);
    addSubcommand(
        ctl, parser, "show", "Show the configuration of an instance", Needs::Machine, declareName, show);
    addSubcommand(ctl, parser, "status", "Show state and start type", Needs::Machine, declareStatus, status);
}

} // namespace quoril
