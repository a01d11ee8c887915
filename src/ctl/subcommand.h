#pragma once

#include "ctl/ctl.h"

#include <CLI/CLI.hpp>

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
void addSubcommand(Ctl& ctl, CLI::App& app, const char* name, const char* description, Needs needs,
    void (*declare)(CLI::App&, Options&), int (*run)(Ctl&, const Options&))
{
    CLI::App* const subcommand = app.add_subcommand(name, description);
    const auto options = std::make_shared<Options>();
    declare(*subcommand, *options);
    subcommand->callback([&ctl, options, needs, run] {
        ctl.needsMachine = needs == Needs::Machine;
        ctl.run = [&ctl, options, run] { return run(ctl, *options); };
    });
}

/// A name, path or other text that is given once.
CLI::Option* addText(CLI::App& app, const char* name, QString& text, const char* description);
/// Several of them.
CLI::Option* addTexts(CLI::App& app, const char* name, QStringList& texts, const char* description);

/// Tells why a command line can't be carried out: the exit code for that.
int usageError(Ctl& ctl, const QString& text);

/// Tells a failure, with the system's text of its error number where there is one: the exit code for that.
int failure(Ctl& ctl, const QString& text, quint32 reason);

// The groups of subcommands.
void addCatalogueSubcommands(Ctl& ctl, CLI::App& app);
void addControlSubcommands(Ctl& ctl, CLI::App& app);
void addLogSubcommands(Ctl& ctl, CLI::App& app);
void addFileSubcommands(Ctl& ctl, CLI::App& app);
void addScheduleSubcommand(Ctl& ctl, CLI::App& app);
void addReportSubcommand(Ctl& ctl, CLI::App& app);
void addInstallationSubcommands(Ctl& ctl, CLI::App& app);
void addMachineSubcommands(Ctl& ctl, CLI::App& app);

} // namespace quoril
