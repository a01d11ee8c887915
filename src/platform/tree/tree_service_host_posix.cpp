#include "platform/tree/tree_service_host.h"

#include "platform/host/exit_code.h"
#include "platform/host/file_lock.h"
#include "platform/host/host_file.h"
#include "platform/host/posix/held_process.h"
#include "platform/tree/tree_machine.h"
#include "platform/tree/tree_service_database.h"
#include "platform/tree/tree_service_state.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QProcessEnvironment>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr quint32 DefaultStartLimitMilliseconds = 30000;
constexpr quint32 EventServiceState = 0x40001B7C; // 7036: "The %1 service entered the %2 state."

quint32 startLimit()
{
    bool isNumber = false;
    const int limit = qEnvironmentVariableIntValue("QUORIL_SERVICE_START_LIMIT", &isNumber);
    return isNumber && limit > 0 ? static_cast<quint32>(limit) : DefaultStartLimitMilliseconds;
}

/// What wakes the host: a file put into the service's folder, and the end of the process.
class Wakeups
{
public:
    explicit Wakeups(const QString& folder)
    {
        m_ends[0].fd = ::inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
        ::inotify_add_watch(
            m_ends[0].fd, QFile::encodeName(folder).constData(), IN_MOVED_TO | IN_CREATE | IN_CLOSE_WRITE);
    }
    ~Wakeups()
    {
        for (const pollfd& end : m_ends)
            if (end.fd >= 0)
                ::close(end.fd);
    }
    Wakeups(const Wakeups&) = delete;
    Wakeups& operator=(const Wakeups&) = delete;

    void watchProcess(pid_t pid) { m_ends[1].fd = static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)); }

    void wait(const QDeadlineTimer& until)
    {
        // A folder of another host may not show its files, and an old kernel not of the process.
        const qint64 longest = m_ends[1].fd >= 0 ? 1000 : 20;
        const qint64 left = until.isForever() ? longest : std::min(longest, until.remainingTime() + 1);
        ::poll(m_ends.data(), m_ends.size(), static_cast<int>(left));
        std::array<char, 4096> notices;
        while (::read(m_ends[0].fd, notices.data(), notices.size()) > 0) { }
    }

private:
    std::array<pollfd, 2> m_ends = {{{-1, POLLIN, 0}, {-1, POLLIN, 0}}};
};

/// Follows one service process from its start to its end.
class Host
{
public:
    Host(const QString& root, const QString& service) : m_machine(root), m_service(service) { }

    Status start();
    void follow();

private:
    Status spawn(const ServiceFolder& folder);
    Status startRecorded(const HostCommand& command);
    void takeReport();
    void take(const ServiceStatus& reported);
    void stopIfAsked();
    void finish(quint32 exitCode);
    quint32 serviceExitCode(quint32 processExitCode) const;
    void logState(QStringView word);
    void publish() { (void)m_folder->record(m_record).ok(); }

    TreeMachine m_machine;
    QString m_service;
    TreeServiceDatabase m_database{m_machine};
    ServiceConfig m_config;
    std::optional<ServiceFolder> m_folder;
    std::optional<TryLock> m_lock;
    std::optional<Wakeups> m_wakeups;
    std::unique_ptr<HostProcess> m_process;
    ServiceRecord m_record;
    ServiceStatus m_reported{0, 0, 0, 0};
    QDeadlineTimer m_startDeadline{QDeadlineTimer::Forever};
    bool m_isStopSent = false;
    bool m_isTimedOut = false;
};

Status Host::start()
{
    const Result<ServiceConfig> config = m_database.config(m_service);
    if (!config)
        return config.failure();
    m_config = *config;
    const Result<ServiceFolder> folder = ServiceFolder::make(m_machine.paths(), m_service);
    if (!folder)
        return folder.failure();
    m_folder = *folder;
    m_lock.emplace(m_folder->place(u"host"));
    // Nobody may hold it while the service counts as stopped, as the starter found it.
    if (!m_lock->isHeld())
        return m_lock->state();
    m_folder->clearRun();
    m_wakeups.emplace(m_folder->path());
    return spawn(*folder);
}

Status Host::spawn(const ServiceFolder& folder)
{
    const Result<TreeProcesses::Program> program = m_database.program(m_config);
    if (!program)
        return program.failure();
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"QUORIL_MACHINE"_s, m_machine.paths().root());
    environment.insert(u"QUORIL_SERVICE"_s, m_service);
    environment.insert(u"QUORIL_SERVICE_FOLDER"_s, folder.path());
    HostCommand command;
    command.program = program->hostPath;
    for (const QString& text : environment.toStringList())
        command.environment.append(QFile::encodeName(text));
    command.arguments.append(QFile::encodeName(program->hostPath));
    for (const QString& argument : program->arguments)
        command.arguments.append(QFile::encodeName(argument));
    const Result<HostPlace> system = m_machine.paths().existing(u"C:\\Windows\\System32");
    command.folder = system ? system->path() : m_machine.paths().root();
    return startRecorded(command);
}

/// The process is recorded before it does anything: one that nobody knows of would run beside the next
/// start's.
Status Host::startRecorded(const HostCommand& command)
{
    const auto before = m_folder->recorded();
    const Result<std::unique_ptr<HeldProcess>> held = HeldProcess::start(command);
    if (!held)
        return held.failure();
    m_record.status.currentState = service_state::StartPending;
    m_record.host = ProcessIdentity::of(::getpid());
    m_record.service = ProcessIdentity::of((*held)->pid());
    if (m_record.service)
        m_record.service->image.clear(); // the host's own until it runs its program
    if (Status kept = m_folder->record(m_record); !kept)
        return kept;
    Result<std::unique_ptr<HostProcess>> process = (*held)->letGo();
    if (!process) {
        if (before)
            (void)m_folder->record(*before).ok();
        else
            (void)removeHostFile(m_folder->place(u"state")).ok();
        return process.failure();
    }
    m_process = *std::move(process);
    m_wakeups->watchProcess(m_process->pid());
    m_startDeadline.setRemainingTime(startLimit());
    if (auto running = ProcessIdentity::of(m_process->pid()))
        m_record.service = std::move(running);
    publish();
    return {};
}

void Host::follow()
{
    while (!m_process->wait(0)) {
        takeReport();
        stopIfAsked();
        if (m_startDeadline.hasExpired() && !m_isTimedOut) {
            m_isTimedOut = true;
            (void)m_process->terminate(error::ServiceRequestTimeout).ok();
            m_startDeadline = QDeadlineTimer(QDeadlineTimer::Forever);
        }
        m_wakeups->wait(m_startDeadline);
    }
    takeReport();
    finish(serviceExitCode(*m_process->exitCode()));
}

void Host::takeReport()
{
    if (const auto report = m_folder->reported())
        take(report->status);
}

void Host::take(const ServiceStatus& reported)
{
    const bool isNew = reported.currentState != m_reported.currentState
        || reported.checkPoint != m_reported.checkPoint
        || reported.waitHintMilliseconds != m_reported.waitHintMilliseconds;
    if (!isNew)
        return;
    m_reported = reported;
    if (reported.currentState == service_state::StartPending) {
        m_startDeadline.setRemainingTime(std::max(startLimit(), reported.waitHintMilliseconds));
    } else {
        m_startDeadline = QDeadlineTimer(QDeadlineTimer::Forever);
    }
    const bool isRunning = reported.currentState == service_state::Running;
    if (isRunning && m_record.status.currentState == service_state::StartPending)
        logState(u"running");
    m_record.status = reported;
    // It has stopped when its process has ended; and a stop that was asked for isn't taken back.
    if (reported.currentState == service_state::Stopped || (isRunning && m_isStopSent))
        m_record.status.currentState = service_state::StopPending;
    publish();
}

void Host::stopIfAsked()
{
    if (m_isStopSent || !m_folder->isStopAsked())
        return;
    m_isStopSent = true;
    m_record.status.currentState = service_state::StopPending;
    publish();
    // The process is a child that has not been waited for, so its number is still its own.
    ::kill(m_process->pid(), SIGTERM);
}

quint32 Host::serviceExitCode(quint32 processExitCode) const
{
    if (m_isTimedOut)
        return error::ServiceRequestTimeout;
    if (m_reported.currentState == service_state::Stopped)
        return m_reported.win32ExitCode;
    if (m_isStopSent && (processExitCode == 0 || processExitCode == StatusControlCExit))
        return error::Success;
    return processExitCode != 0 ? processExitCode : error::ProcessAborted;
}

void Host::finish(quint32 exitCode)
{
    logState(u"stopped");
    // Starts and removals by others wait for the lock, so none of them sees half of what follows.
    // A tree that was taken away meanwhile has no place for the lock, and nothing more to keep.
    const auto lock = ServiceFolder::lockServices(ServiceFolder::parent(m_machine.paths()));
    m_folder->clearRun();
    m_record = {{service_state::Stopped, exitCode, 0, 0}, {}, {}};
    publish();
    if (lock)
        m_database.removeIfMarked(m_service, *m_folder);
    m_lock->release();
}

void Host::logState(QStringView word)
{
    const auto now = static_cast<quint32>(m_machine.clock().now());
    EventEntry entry;
    entry.timeGenerated = now;
    entry.timeWritten = now;
    entry.eventId = EventServiceState;
    entry.eventType = event_type::Information;
    entry.sourceName = u"Service Control Manager"_s;
    if (const Result<QString> computer = m_machine.systemInfo().computerName())
        entry.computerName = *computer;
    entry.insertStrings.append(m_config.displayName);
    entry.insertStrings.append(word);
    // A log that can't be written keeps no service from running.
    (void)m_machine.eventLogs().report(u"System", entry).ok();
}

/// The process goes on alone: no terminal, no parent that has to wait for it.
bool detach()
{
    const pid_t child = ::fork();
    if (child < 0)
        return false;
    if (child > 0)
        ::_exit(0);
    ::setsid();
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGHUP, SIG_IGN);
    std::signal(SIGINT, SIG_IGN);
    return true;
}

} // namespace

int runServiceHost(const QString& treeRoot, const QString& service, int answer)
{
    if (!detach())
        return 1;
    // Kept from the service's process, and put out of the way of the standard descriptors.
    const int pipe = ::fcntl(answer, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (const int null = ::open("/dev/null", O_WRONLY | O_CLOEXEC); null >= 0) {
        ::dup2(null, answer);
        ::close(null);
    }
    Host host(treeRoot, service);
    const Status started = host.start();
    QByteArray text = QByteArray::number(started.errorNumber()) + '\n';
    if (!started)
        text += started.failure().detail.toUtf8() + '\n';
    // A starter that is gone meanwhile leaves the service as it is.
    const bool isAnswered = ::write(pipe, text.constData(), static_cast<std::size_t>(text.size())) > 0;
    ::close(pipe);
    if (!started)
        return isAnswered ? 0 : 1;
    host.follow();
    return 0;
}

} // namespace quoril
