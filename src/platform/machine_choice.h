#pragma once

#include "platform/host/host_session.h"

#include <QString>

#include <memory>

namespace quoril {

class Machine;

/// Which machine a program works on: where its tree is looked for, and how it was named.
struct MachineChoice
{
    enum class Origin
    {
        Option,
        Environment,
        BesideProgram,
        UserData,
        Live // the machine that the program runs on; there is no tree then
    };

    QString folder;
    Origin origin = Origin::UserData;
};

/// The machine that a program works on: the tree of its option where that isn't empty, else that of the
/// environment variable QUORIL_MACHINE, also where that is empty and no folder, else unnamedMachine().
MachineChoice chooseMachine(const QString& option);

/// Where nothing names a tree: on Windows the live machine; elsewhere the folder "machine" beside the
/// program, else the tree among the user's data.
MachineChoice unnamedMachine();

/// The machine of that choice. Among the user's data the sample machine is made when there is none. What
/// can't be had is reported on standard error, and the machine then has an empty registry. A tree's session
/// locks the workstation by that lock.
std::unique_ptr<Machine> openMachine(const MachineChoice& choice, WorkstationLock lock = nullptr);

/// The machine that the program runs on; null where that is no Windows.
std::unique_ptr<Machine> openHostMachine();

} // namespace quoril
