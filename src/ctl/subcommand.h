#pragma once

#include "ctl/command_parser.h"
#include "ctl/ctl.h"

#include <QString>

#include <functional>
#include <memory>

namespace quoril {

/// One run of the program, as the subcommands see it.
struct Ctl
{
    Console& console;
    bool json = false;
    QString machineFolder; ///< of --machine, empty without it
    std::function<int()> run; ///< what the chosen subcommand does, its exit code as the result
    bool needsMachine = true; ///< whether it runs with a machine in force
};

enum class Needs
{
    Machine,
    Nothing
};

/// Adds a subcommand with options of its own. `declare` binds the options to the record that `run` gets.
template <typename Options>
void addSubcommand(Ctl& ctl, const CommandParser& parser, const char* name, const char* description,
    Needs needs, void (*declare)(const CommandParser&, Options&), int (*run)(Ctl&, const Options&))
{
    const auto options = std::make_shared<Options>();
    const auto chosen = [&ctl, options, needs, run] {
        ctl.needsMachine = needs == Needs::Machine;
        ctl.run = [&ctl, options, run] { return run(ctl, *options); };
    };
    declare(parser.addSubcommand(name, description, chosen), *options);
}

/// Reports why a command line can't be carried out: the exit code for that.
int usageError(Ctl& ctl, const QString& text);

/// Reports a failure, with the system's text of its error number where there is one: the exit code for that.
int failure(Ctl& ctl, const QString& text, quint32 reason);

/// Puts the content in place of the file, in one step: whoever reads it sees all of the old or of the new
/// one. What is no file, a device or a pipe, is written to and stays. The exit code; a failure is reported.
int replaceFile(Ctl& ctl, const QString& path, const QByteArray& content);

// The groups of subcommands.
void addCatalogueSubcommands(Ctl& ctl, const CommandParser& parser);
void addControlSubcommands(Ctl& ctl, const CommandParser& parser);
void addLogSubcommands(Ctl& ctl, const CommandParser& parser);
void addFileSubcommands(Ctl& ctl, const CommandParser& parser);
void addScheduleSubcommand(Ctl& ctl, const CommandParser& parser);
void addReportSubcommand(Ctl& ctl, const CommandParser& parser);
void addInstallationSubcommands(Ctl& ctl, const CommandParser& parser);
void addMetricsSubcommand(Ctl& ctl, const CommandParser& parser);
void addWaitSubcommand(Ctl& ctl, const CommandParser& parser);
void addMachineCheck(Ctl& ctl, const CommandParser& machine);
void addMachineSubcommands(Ctl& ctl, const CommandParser& parser);

} // namespace quoril
