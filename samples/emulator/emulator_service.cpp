#include "emulator.h"
#include "emulator_log.h"

#include "platform/clock.h"
#include "platform/machine.h"

namespace quoril::emulator {

using namespace Qt::StringLiterals;

namespace {

constexpr quint32 StartMark = 0x249;
constexpr quint32 CodeHost = 0x101;
constexpr quint32 CodeMemory = 0x112;
constexpr quint32 CodeStopRequest = 0x250;
constexpr quint32 CodeStopIgnored = 0x251;
constexpr quint32 CodeFailure = 0x2FF;
constexpr quint32 CheckPointMilliseconds = 500;

/// Spends the time of a slow start, telling now and then that it goes on.
void startSlowly(Machine& machine, Controller& controller, quint32 milliseconds)
{
    quint32 checkPoint = 1;
    while (milliseconds > 0) {
        const quint32 step = qMin(milliseconds, CheckPointMilliseconds);
        machine.clock().sleep(step);
        milliseconds -= step;
        controller.reportStartPending(++checkPoint, 2 * CheckPointMilliseconds);
    }
}

[[noreturn]] void hang(Controller& controller)
{
    while (true)
        controller.waitForStop(std::nullopt);
}

} // namespace

int runService(Machine& machine, Controller& controller, const Behaviour& behaviour)
{
    if (behaviour.reportsNothing)
        hang(controller);
    controller.reportStartPending(1, 2 * CheckPointMilliseconds);
    InstanceLog log(machine, controller.serviceName());
    if (behaviour.exitCode) {
        log.write(Level::Error, CodeFailure, u"The session ends early"_s);
        return *behaviour.exitCode;
    }
    if (behaviour.hangsInStart)
        hang(controller);
    startSlowly(machine, controller, behaviour.startDelayMilliseconds);
    log.write(Level::Information, StartMark, u"Start of session: "_s + controller.serviceName());
    log.write(Level::Information, CodeHost, u"Quoril emulator on "_s + log.computerName());
    log.write(Level::Warning, CodeMemory, u"This is a stand-in: no processor is emulated"_s);
    log.reportEvent(Level::Information, StartMark, u"Session started: "_s + controller.serviceName());
    controller.reportRunning();

    controller.waitForStop(std::nullopt);
    if (behaviour.ignoresStop) {
        log.write(Level::Warning, CodeStopIgnored, u"The request to stop is ignored"_s);
        hang(controller);
    }
    controller.reportStopPending(behaviour.stopDelayMilliseconds + CheckPointMilliseconds);
    log.write(Level::Information, CodeStopRequest, u"End of session: "_s + controller.serviceName());
    machine.clock().sleep(behaviour.stopDelayMilliseconds);
    controller.reportStopped(0);
    return 0;
}

} // namespace quoril::emulator
