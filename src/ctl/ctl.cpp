#include "ctl/ctl.h"

#include "ctl/subcommand.h"
#include "platform/machine.h"
#include "resources/resource_module.h"
#include "resources/text_ids.h"
#include "services/service_by_name.h"

#include <sstream>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr const char* Description = "Manages the instances of the Quoril emulator on a machine.";
constexpr const char* Footer = R"(
Exit codes: 0 done, 1 failed, 2 wrong usage. quorilctl SUBCOMMAND --help tells more.)";

void declareProgram(Ctl& ctl, CLI::App& app)
{
    app.name("quorilctl");
    app.footer(Footer);
    app.require_subcommand(1);
    app.fallthrough();
    app.set_version_flag("--version", "quorilctl " QUORIL_VERSION, "Print the version and exit");
    app.set_help_flag("-h,--help", "Print this help and exit");
    // A script whose variable is empty must not get another machine than it meant.
    addText(app, "--machine", ctl.machineFolder, "Folder of the machine's tree")
        ->type_name("DIR")
        ->check([](const std::string& folder) { return folder.empty() ? "it is empty" : ""; });
    app.add_flag("--json", ctl.json, "Print JSON");
    addCatalogueSubcommands(ctl, app);
    addControlSubcommands(ctl, app);
    addLogSubcommands(ctl, app);
    addReportSubcommand(ctl, app);
    addScheduleSubcommand(ctl, app);
    addInstallationSubcommands(ctl, app);
    addFileSubcommands(ctl, app);
    addMachineSubcommands(ctl, app);
}

/// The arguments behind the program's name, the last first.
std::vector<std::string> reversed(const QStringList& arguments)
{
    std::vector<std::string> reversed;
    for (qsizetype index = arguments.size() - 1; index > 0; --index)
        reversed.push_back(arguments[index].toStdString());
    return reversed;
}

/// Prints help or version, or tells what is wrong with the command line.
int printOutcome(Console& console, CLI::App& app, const CLI::ParseError& outcome)
{
    std::ostringstream out;
    std::ostringstream errors;
    const int code = app.exit(outcome, out, errors);
    const bool unknown = app.get_subcommands().empty() && app.remaining_size() > 0;
    if (unknown)
        console.tell(u"quorilctl: \"%1\" is no subcommand; --help lists them"_s.arg(
            QString::fromStdString(app.remaining().front())));
    else if (code == 0)
        console.lines(QString::fromStdString(out.str()).trimmed());
    else
        console.tellLines(u"quorilctl: "_s + QString::fromStdString(errors.str()).trimmed());
    return code == 0 ? exit_code::Done : exit_code::Usage;
}

int runOnMachine(Ctl& ctl, const MachineOpener& openMachine)
{
    const auto opened = openMachine(ctl.machineFolder);
    if (!opened) {
        // Without a machine there is nobody to ask for the text of a number.
        const Error& why = opened.failure();
        ctl.console.tell(why.detail);
        return exit_code::Failed;
    }
    const ScopedMachine inForce(**opened);
    return ctl.run();
}

} // namespace

int runCtl(const QStringList& arguments, Console& console, const MachineOpener& openMachine)
{
    CLI::App app(Description);
    Ctl ctl{console, false, {}, {}, true};
    declareProgram(ctl, app);
    int code = exit_code::Done;
    try {
        app.parse(reversed(arguments));
        code = ctl.needsMachine ? runOnMachine(ctl, openMachine) : ctl.run();
    } catch (const CLI::ParseError& outcome) {
        code = printOutcome(console, app, outcome);
    }
    if (!console.flush()) {
        console.tell(u"quorilctl: the output could not be written"_s);
        return exit_code::Failed;
    }
    return code;
}

CLI::Option* addText(CLI::App& app, const char* name, QString& text, const char* description)
{
    return app.add_option_function<std::string>(
        name, [&text](const std::string& given) { text = QString::fromStdString(given); }, description);
}

CLI::Option* addTexts(CLI::App& app, const char* name, QStringList& texts, const char* description)
{
    const auto take = [&texts](const std::vector<std::string>& given) {
        for (const std::string& each : given)
            texts.append(QString::fromStdString(each));
    };
    return app.add_option_function<std::vector<std::string>>(name, take, description);
}

int usageError(Ctl& ctl, const QString& text)
{
    ctl.console.tell(u"quorilctl: "_s + text);
    return exit_code::Usage;
}

int failure(Ctl& ctl, const QString& text, quint32 reason)
{
    const QString why = reason ? LoadText(text::Reason) + ServiceApp::ErrorText(reason) : QString();
    ctl.console.tell(text + why);
    return exit_code::Failed;
}

} // namespace quoril
