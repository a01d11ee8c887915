#pragma once

#include <memory>

namespace quoril {

class Clock;
class EventLogs;
class Files;
class Processes;
class Registry;
class ServiceControl;
class Session;
class SystemInfo;
class TreeMachine;

/// The machine that is managed: everything that the console knows or changes outside its own process goes
/// through these interfaces. The references live as long as the machine. Registry, services, processes,
/// files, system information and clock may be used from any thread; session and its subscriptions from the
/// main one.
class Machine
{
public:
    virtual ~Machine() = default;

    virtual Registry& registry() = 0;
    virtual ServiceControl& services() = 0;
    virtual EventLogs& eventLogs() = 0;
    virtual Processes& processes() = 0;
    virtual Files& files() = 0;
    virtual SystemInfo& systemInfo() = 0;
    virtual Session& session() = 0;
    virtual Clock& clock() = 0;

    /// Itself where it is a tree in a folder, else null: for what a live machine has no call for.
    virtual TreeMachine* tree() { return nullptr; }
};

/// The machine in force. A program puts one in place before anything else runs.
Machine& machine();

/// Puts a machine in force for a scope, and the one before it back at its end. Not owned.
class ScopedMachine
{
public:
    explicit ScopedMachine(Machine& inForce);
    ~ScopedMachine();
    ScopedMachine(const ScopedMachine&) = delete;
    ScopedMachine& operator=(const ScopedMachine&) = delete;

private:
    Machine* m_before;
};

} // namespace quoril
