#include "ctl/ctl.h"

#include "ctl/subcommand.h"
#include "platform/machine.h"
#include "resources/resource_module.h"
#include "resources/text_ids.h"
#include "services/service_app.h"

#include <QFileInfo>
#include <QSaveFile>

#include <new>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr const char* Description = "Manages the instances of the Quoril emulator on a machine.";
constexpr const char* Footer = R"(
Exit codes: 0 done, 1 failed, 2 wrong usage. See quorilctl SUBCOMMAND --help for more.)";

void declareProgram(Ctl& ctl, const CommandParser& parser)
{
    // A script whose variable is empty must not get another machine than it meant.
    parser.addText("--machine", ctl.machineFolder, "Folder of the machine's tree")
        .valueName("DIR")
        .notEmpty();
    parser.addFlag("--json", ctl.json, "Print JSON");
    addCatalogueSubcommands(ctl, parser);
    addControlSubcommands(ctl, parser);
    addWaitSubcommand(ctl, parser);
    addLogSubcommands(ctl, parser);
    addMetricsSubcommand(ctl, parser);
    addReportSubcommand(ctl, parser);
    addScheduleSubcommand(ctl, parser);
    addInstallationSubcommands(ctl, parser);
    addFileSubcommands(ctl, parser);
    addMachineSubcommands(ctl, parser);
}

/// Prints what a command line asked for instead of a subcommand, or says what is wrong with it.
int printOutcome(Console& console, const CommandLineParser::Outcome& outcome)
{
    if (outcome.kind == outcome.Answered) {
        console.lines(outcome.text);
        return exit_code::Done;
    }
    if (outcome.kind == outcome.UnknownSubcommand)
        console.report(
            u"quorilctl: \"%1\" is not a subcommand; see \"quorilctl --help\""_s.arg(outcome.text));
    else
        console.reportLines(u"quorilctl: "_s + outcome.text);
    return exit_code::Usage;
}

int runOnMachine(Ctl& ctl, const MachineOpener& openMachine)
{
    const auto opened = openMachine(ctl.machineFolder);
    if (!opened) {
        // Without a machine there is nobody to ask for the text of a number.
        const Error& why = opened.failure();
        ctl.console.report(why.detail);
        return exit_code::Failed;
    }
    const ScopedMachine inForce(**opened);
    return ctl.run();
}

/// A file can be made to take more memory than there is.
int runSubcommand(Ctl& ctl, const MachineOpener& openMachine)
{
    try {
        return ctl.needsMachine ? runOnMachine(ctl, openMachine) : ctl.run();
    } catch (const std::bad_alloc&) {
        ctl.console.report(u"quorilctl: "_s + ServiceApp::ErrorText(error::NotEnoughMemory));
        return exit_code::Failed;
    }
}

} // namespace

int runCtl(const QStringList& arguments, Console& console, const MachineOpener& openMachine)
{
    CommandLineParser parser("quorilctl", "quorilctl " QUORIL_VERSION, Description, Footer);
    Ctl ctl{console, false, {}, {}, true};
    declareProgram(ctl, parser.program());
    const CommandLineParser::Outcome outcome = parser.parse(arguments);
    int code = exit_code::Done;
    if (outcome.kind != outcome.Chosen)
        code = printOutcome(console, outcome);
    else
        code = runSubcommand(ctl, openMachine);
    if (!console.flush()) {
        if (!console.isClosed())
            console.report(u"quorilctl: the output could not be written"_s);
        return exit_code::Failed;
    }
    return code;
}

int usageError(Ctl& ctl, const QString& text)
{
    ctl.console.report(u"quorilctl: "_s + text);
    return exit_code::Usage;
}

int failure(Ctl& ctl, const QString& text, quint32 reason)
{
    ctl.console.report(withReason(text, reason));
    return exit_code::Failed;
}

int replaceFile(Ctl& ctl, const QString& path, const QByteArray& content)
{
    const QFileInfo info(path);
    QFile other(path);
    QSaveFile whole(path);
    const bool isOther = info.exists() && !info.isFile();
    QFileDevice& file = isOther ? static_cast<QFileDevice&>(other) : whole;
    const bool isWritten
        = file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.flush();
    if (isWritten && (isOther || whole.commit()))
        return exit_code::Done;
    ctl.console.report(u"\"%1\" can't be written: %2"_s.arg(path, file.errorString()));
    return exit_code::Failed;
}

} // namespace quoril
