#pragma once

#include "fake_calls.h"
#include "fake_registry.h"
#include "fake_services.h"
#include "platform/clock.h"
#include "platform/event_logs.h"
#include "platform/files.h"
#include "platform/machine.h"
#include "platform/processes.h"
#include "platform/session.h"
#include "platform/system_info.h"
#include "services/user_prompts.h"

#include <QHash>

#include <atomic>
#include <functional>
#include <map>
#include <vector>

namespace quoril::test {

/// Time by hand. A sleep takes no time of its own: it is logged ("sleep 1000") and moves the clock.
class FakeClock : public Clock
{
public:
    explicit FakeClock(FakeCalls& calls) : m_calls(calls) { }

    /// Sets the wall clock, in seconds since 1970-01-01 UTC.
    void setNow(qint64 seconds) { m_milliseconds = seconds * 1000; }
    void advance(quint32 milliseconds);

    /// Real milliseconds per millisecond of a window timer; 0 fires a timer as soon as the event loop is
    /// free.
    double timerScale = 0;
    /// The periods that window timers were asked for, in order.
    mutable std::vector<quint32> timers;
    std::function<void()> onSleep; ///< called while somebody sleeps
    /// Real milliseconds per millisecond of an interruptible wait. Not changed while a thread may wait.
    double waitScale = 0.01;

    qint64 now() const override { return m_milliseconds / 1000; }
    quint64 tickCount() const override { return m_ticks; }
    void sleep(quint32 milliseconds) override;
    void wait(quint32 milliseconds, std::unique_lock<std::mutex>& lock, std::condition_variable& wake,
        const std::function<bool()>& ended) override;
    int timerInterval(quint32 milliseconds) const override;

private:
    FakeCalls& m_calls;
    std::atomic<qint64> m_milliseconds{1'700'000'000'000};
    std::atomic<quint64> m_ticks{1000};
};

/// Processes that run for a time of the manual clock and end with an exit code. Log: "create APP|COMMAND
/// LINE", "wait 30000", "terminate CODE".
class FakeProcesses : public Processes
{
public:
    FakeProcesses(FakeCalls& calls, FakeClock& clock) : m_calls(calls), m_clock(clock) { }

    quint32 createError = error::Success;
    quint32 unfitError = error::Success; ///< of what canRun() is asked about
    quint32 exitCode = 0;
    quint32 runsFor = 0; ///< milliseconds from its creation to its end

    Result<std::unique_ptr<Process>> create(QStringView applicationName, QStringView commandLine) override;
    Status canRun(QStringView) const override { return unfitError ? Error{unfitError, {}} : Status(); }

private:
    FakeCalls& m_calls;
    FakeClock& m_clock;
};

/// Files by machine path, without regard to case and separator. Folders are not modelled but for the missing
/// ones. The drive lies in the host's folder "/machine".
class FakeFiles : public Files
{
public:
    explicit FakeFiles(FakeCalls& calls) : m_calls(calls) { }

    void put(QStringView path, const QByteArray& content);
    /// The content; nothing if there is no such file.
    std::optional<QByteArray> content(QStringView path) const;
    /// Folders that can't be entered and in which no file can be made.
    void addMissingFolder(QStringView path) { m_missing.append(normal(path)); }

    QString currentDirectory;
    qint64 readsFailAt = -1; ///< in bytes from the begin of a file; -1 for nowhere
    QHash<QString, QString> fileVersions; ///< by machine path in lower case

    Result<std::unique_ptr<QIODevice>> openForReading(QStringView path) override;
    Result<std::unique_ptr<QIODevice>> openForWriting(QStringView path) override;
    Status remove(QStringView path) override;
    /// Patterns like "*.exe" only; the names come in lower case.
    Result<QStringList> find(QStringView pattern) override;
    Result<QString> fileVersion(QStringView path) override;
    Status setCurrentDirectory(QStringView path) override;
    Result<QString> hostPath(QStringView path) const override;
    Result<QString> machinePath(const QString& hostPath) const override;

private:
    static QString normal(QStringView path);
    FakeCalls& m_calls;
    std::map<QString, std::shared_ptr<QByteArray>> m_files;
    QStringList m_missing;
};

class FakeSystemInfo : public SystemInfo
{
public:
    explicit FakeSystemInfo(FakeCalls& calls) : m_calls(calls) { }

    QString name = QStringLiteral("HOST");
    /// The system's texts, without the line end that errorText() adds.
    QHash<quint32, QString> texts{{error::FileNotFound, QStringLiteral("File not found.")},
        {error::AccessDenied, QStringLiteral("Access is denied.")}};

    QHash<QString, QString> fileVersions; ///< by host path

    SystemVersion systemVersion;
    ProcessorInfo processorInfo;
    quint64 memory = 0;

    Result<QString> computerName() const override;
    Result<SystemVersion> version() const override;
    ProcessorInfo processors() const override { return processorInfo; }
    Result<quint64> physicalMemory() const override;
    QString windowsDirectory() const override { return QStringLiteral("C:\\Windows"); }
    Result<QString> fileVersion(const QString& hostPath) const override;
    QString errorText(quint32 number) const override;

private:
    FakeCalls& m_calls;
};

/// The session. Log: "broadcast MESSAGE [past hung windows]", "lock workstation", "restore TITLE", "bring
/// forward TITLE".
class FakeSession : public Session
{
public:
    explicit FakeSession(FakeCalls& calls) : m_calls(calls) { }

    QString userLanguage = QStringLiteral("ENU");
    QString systemLanguage = QStringLiteral("ENU");
    QHash<QString, bool> windows; ///< title to whether it is iconic

    int subscriptions() const { return int(m_handlers->size()); }

    QString abbreviatedLanguageName(Locale locale) const override;
    std::unique_ptr<ForeignWindow> findWindow(QStringView title) override;
    std::unique_ptr<MessageSubscription> subscribe(
        QStringView message, std::function<void()> handler) override;
    void broadcast(QStringView message, HungWindows hung) override;
    LockKeys lockKeys() const override { return {}; }
    Status lockWorkstation() override;

private:
    using Handlers = std::map<int, std::pair<QString, std::function<void()>>>;
    FakeCalls& m_calls;
    std::shared_ptr<Handlers> m_handlers = std::make_shared<Handlers>();
    int m_nextHandler = 0;
};

/// Event logs in memory, "System" and "Application".
class FakeEventLogs : public EventLogs
{
public:
    using Entries = std::vector<EventEntry>;

    explicit FakeEventLogs(FakeCalls& calls) : m_calls(calls) { }

    /// The entries by the log's name, the oldest first. A log that isn't there can't be opened.
    std::map<QString, Entries> logs{{QStringLiteral("System"), {}}, {QStringLiteral("Application"), {}}};

    Result<std::unique_ptr<EventLog>> open(QStringView name, EventSpan span) override;
    Status report(QStringView name, const EventEntry& entry) override;

private:
    FakeCalls& m_calls;
};

/// A machine that holds nothing but what a test puts into it. All its parts share one log, one count of open
/// handles and one plan of failure. It is in force while it lives; make one for each case.
class FakeMachine : public Machine
{
public:
    FakeCalls calls;
    FakeClock fakeClock{calls};
    FakeRegistry fakeRegistry{calls};
    FakeServiceControl fakeServices{calls};
    FakeProcesses fakeProcesses{calls, fakeClock};
    FakeFiles fakeFiles{calls};
    FakeSystemInfo fakeSystemInfo{calls};
    FakeSession fakeSession{calls};
    FakeEventLogs fakeEventLogs{calls};

    /// Registers a stopped emulator service, in the registry and with the manager, with its prerequisites.
    FakeServiceControl::Script& addInstance(const QString& name, const QStringList& prerequisites = {});

    Registry& registry() override { return fakeRegistry; }
    ServiceControl& services() override { return fakeServices; }
    EventLogs& eventLogs() override { return fakeEventLogs; }
    Processes& processes() override { return fakeProcesses; }
    Files& files() override { return fakeFiles; }
    SystemInfo& systemInfo() override { return fakeSystemInfo; }
    Session& session() override { return fakeSession; }
    Clock& clock() override { return fakeClock; }

private:
    ScopedMachine m_inForce{*this};
};

/// Records what the person is told, in the machine's log ("inform TEXT 2000", "message TEXT", "ask TEXT",
/// "confirm NAME"), lets the time of an information box pass, and answers each question from the script, then
/// with yes.
class RecordingPrompts : public UserPrompts
{
public:
    explicit RecordingPrompts(FakeMachine& machine) : m_machine(machine) { }

    std::vector<bool> answers;

    void inform(const QString& text, quint32 periodMilliseconds) override;
    void message(const QString& text) override;
    bool ask(const QString& question) override;
    bool confirmRemoval(const QString& serviceName) override;

private:
    bool answer();
    FakeMachine& m_machine;
};

} // namespace quoril::test
