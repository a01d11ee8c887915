#pragma once

#include "formats/error.h"
#include "platform/event_logs.h"

#include <QString>
#include <QStringList>
#include <QStringView>

#include <optional>

namespace quoril {

class Machine;

namespace emulator {

/// How an instance behaves, from the arguments of its service's path.
struct Behaviour
{
    quint32 startDelayMilliseconds = 0;
    quint32 stopDelayMilliseconds = 0;
    bool hangsInStart = false;
    bool ignoresStop = false;
    bool reportsNothing = false;
    std::optional<int> exitCode; // it ends with that instead of running

    /// None for arguments that mean nothing.
    static std::optional<Behaviour> from(const QStringList& arguments);
};

/// What the service manager of the host is to the process of a service.
class Controller
{
public:
    virtual ~Controller() = default;

    /// The name of the service that this process runs as.
    virtual QString serviceName() const = 0;
    virtual void reportStartPending(quint32 checkPoint, quint32 waitHintMilliseconds) = 0;
    virtual void reportRunning() = 0;
    virtual void reportStopPending(quint32 waitHintMilliseconds) = 0;
    virtual void reportStopped(quint32 exitCode) = 0;
    /// Waits so long for the request to stop, for ever without a time. True if it came.
    virtual bool waitForStop(std::optional<quint32> milliseconds) = 0;
};

/// Runs as the service until it is asked to stop. Gives the exit status.
int runService(Machine& machine, Controller& controller, const Behaviour& behaviour);

/// Registers the service with the settings of the configuration file (a path of the machine), for a program
/// that lies at the machine's path `program`.
Status install(Machine& machine, QStringView name, QStringView configuration, const QString& program);

/// Does what "--install NAME CONFIG" asks for, with the program's machine path, empty where it lies outside
/// the machine. What goes wrong is reported on standard error. Gives the exit code: 0xFFFFFFFF, or a Windows
/// error number.
quint32 installByArguments(Machine& machine, const QStringList& arguments, const QString& program);

/// The platform's side: the machine that the process belongs to and its service manager. Gives the exit
/// status.
int runOnPlatform(const QStringList& arguments);

} // namespace emulator

} // namespace quoril
