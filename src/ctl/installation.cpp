// install, update.

#include "ctl/advice.h"
#include "ctl/console_prompts.h"
#include "ctl/instances.h"
#include "ctl/subcommand.h"
#include "services/installer_command_line.h"

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

struct InstallOptions
{
    QString name;
    QString configuration;
    QString executable;
};

void declareInstall(const CommandParser& parser, InstallOptions& options)
{
    parser.addText("name", options.name, "Name of the instance").required().valueName("NAME");
    parser
        .addText("--config", options.configuration,
            "Configuration file, by its path on the machine or on this computer")
        .required()
        .valueName("FILE");
    parser.addText("--executable", options.executable, "The product's executable, by a path of either kind")
        .required()
        .valueName("FILE");
}

/// Whether the executable's command line can carry the texts as they were given; reported if not.
bool isSafe(const InstallOptions& options, bool isUpdate, UserPrompts& prompts)
{
    const QString refusal
        = unsafeArgument({options.name, options.configuration, isUpdate, options.executable});
    if (!refusal.isEmpty())
        prompts.message(refusal);
    return refusal.isEmpty();
}

int run(Ctl& ctl, const InstallOptions& options, bool isUpdate)
{
    ConsolePrompts prompts(ctl.console);
    if (options.name.isEmpty() || options.configuration.isEmpty() || options.executable.isEmpty())
        return usageError(ctl, QStringLiteral("a name or path is empty"));
    if (!isSafe(options, isUpdate, prompts))
        return exit_code::Failed;
    const InstallerFile configuration = findInstallerFile(options.configuration);
    const InstallerFile executable = findInstallerFile(options.executable);
    for (const QString& why : {configuration.failure, executable.failure}) {
        if (why.isEmpty())
            continue;
        prompts.message(why);
        return exit_code::Failed;
    }
    const InstallRequest request{options.name, configuration.path, isUpdate, executable.path};
    const InstallOutcome outcome = CheckedInstaller().InstallService(request, prompts);
    Instances instances;
    if (outcome.step != InstallStep::Done) {
        const bool isInstance = instances.read(ctl) && instances.lookUp(options.name);
        if (isUpdate && !isInstance)
            ctl.console.report(u"No instance \"%1\"; use \"quorilctl install\"."_s.arg(options.name));
        else if (!isUpdate && isInstance)
            ctl.console.report(u"%1 exists already; use \"quorilctl update\"."_s.arg(options.name));
        else
            adviseExecutable(ctl, executable.path);
        return exit_code::Failed;
    }
    if (!instances.read(ctl))
        return exit_code::Failed;
    if (ServiceInfo* const service = instances.lookUp(options.name))
        return printStatus(ctl, {service}, true);
    prompts.message(
        options.name + u" is installed, but not as an instance of the emulator: it is not listed."_s);
    return exit_code::Failed;
}

int install(Ctl& ctl, const InstallOptions& options)
{
    return run(ctl, options, false);
}

int update(Ctl& ctl, const InstallOptions& options)
{
    return run(ctl, options, true);
}

} // namespace

void addInstallationSubcommands(Ctl& ctl, const CommandParser& parser)
{
    addSubcommand(ctl, parser, "install", "Have the product's executable register a new instance",
        Needs::Machine, declareInstall, install);
    addSubcommand(ctl, parser, "update", "Remove an instance and have the executable register it again",
        Needs::Machine, declareInstall, update);
}

} // namespace quoril
