// The emulator's side of a machine that is a tree: the handshake of docs/service-handshake.md.

#include "emulator.h"
#include "emulator_log.h"

#include "platform/host/exit_code.h"
#include "platform/host/host_file.h"
#include "platform/machine_choice.h"
#include "platform/terminal.h"
#include "platform/tree/tree_machine.h"
#include "platform/tree/tree_service_state.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <unistd.h>

namespace quoril::emulator {

using namespace Qt::StringLiterals;

namespace {

constexpr int FailedStatus = 1;

/// The signal that asks to stop is held back and waited for.
sigset_t stopSignals()
{
    sigset_t signalSet;
    sigemptyset(&signalSet);
    sigaddset(&signalSet, SIGTERM);
    return signalSet;
}

class TreeController : public Controller
{
public:
    TreeController(const QString& service, const ServiceFolder& folder) : m_service(service), m_folder(folder)
    {
        const sigset_t signalSet = stopSignals();
        ::pthread_sigmask(SIG_BLOCK, &signalSet, nullptr);
    }

    QString serviceName() const override { return m_service; }
    void reportStartPending(quint32 checkPoint, quint32 waitHint) override
    {
        report({service_state::StartPending, 0, checkPoint, waitHint});
    }
    void reportRunning() override { report({service_state::Running, 0, 0, 0}); }
    void reportStopPending(quint32 waitHint) override
    {
        report({service_state::StopPending, 0, 1, waitHint});
    }
    void reportStopped(quint32 exitCode) override { report({service_state::Stopped, exitCode, 0, 0}); }

    bool waitForStop(std::optional<quint32> milliseconds) override
    {
        const sigset_t signalSet = stopSignals();
        const auto time = milliseconds.value_or(3600U * 1000U);
        const timespec limit
            = {static_cast<std::time_t>(time / 1000), static_cast<long>(time % 1000) * 1000000L};
        while (true) {
            if (::sigtimedwait(&signalSet, nullptr, &limit) == SIGTERM)
                return true;
            if (milliseconds && errno == EAGAIN)
                return false;
        }
    }

private:
    // A folder that can't be written any more ends in the manager's time limit.
    void report(const ServiceStatus& status) { (void)m_folder.report({status, {}, {}}).ok(); }

    QString m_service;
    ServiceFolder m_folder;
};

} // namespace

bool appendToFile(Machine& machine, const QString& path, const QByteArray& bytes)
{
    const Result<HostPlace> place = static_cast<TreeMachine&>(machine).paths().forCreation(path);
    if (!place)
        return false;
    const auto file = openRegularFile(*place, HostOpen::Append);
    // One write at the end: lines of several writers don't mix.
    const auto size = static_cast<std::size_t>(bytes.size());
    return file && ::write((*file)->handle(), bytes.constData(), size) == bytes.size();
}

int runOnPlatform(const QStringList& arguments)
{
    if (!arguments.isEmpty() && arguments.first() == u"--install") {
        const auto machine = openMachine(chooseMachine({}));
        auto& tree = static_cast<TreeMachine&>(*machine); // there is no other kind here
        const QString self = tree.paths().machinePath(QFile::symLinkTarget(u"/proc/self/exe"_s));
        const quint32 code = installByArguments(*machine, arguments, self);
        reportExitCode(code);
        return static_cast<int>(code);
    }
    const std::optional<Behaviour> behaviour = Behaviour::from(arguments);
    const QString service = qEnvironmentVariable("QUORIL_SERVICE");
    if (!behaviour || service.isEmpty()) {
        say(behaviour ? u"quoril-emulator runs as a service: register one with --install, then start that."_s
                      : u"quoril-emulator: can't read the options \"%1\"; --help lists those there are"_s.arg(
                          arguments.join(u' ')));
        return FailedStatus;
    }
    TreeMachine machine(qEnvironmentVariable("QUORIL_MACHINE"));
    TreeController controller(service, ServiceFolder(machine.paths(), service));
    return runService(machine, controller, *behaviour);
}

} // namespace quoril::emulator
