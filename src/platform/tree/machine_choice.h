#pragma once

#include <QString>

#include <memory>

namespace quoril {

class TreeMachine;

/// Where a machine's tree is looked for, and how it was named.
struct MachineChoice
{
    enum class Origin
    {
        Option,
        Environment,
        BesideProgram,
        UserData
    };

    QString folder;
    Origin origin = Origin::UserData;
};

/// The tree that a program works on: the one of its option where that isn't empty, else that of the
/// environment variable QUORIL_MACHINE, else the folder "machine" beside the program, else the one among the
/// user's data.
MachineChoice chooseMachine(const QString& option);

/// The machine of that choice. Among the user's data the sample machine is made when there is none. What
/// can't be had is told on standard error, and the machine then has an empty registry.
std::unique_ptr<TreeMachine> openMachine(const MachineChoice& choice);

} // namespace quoril
