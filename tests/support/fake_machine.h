#pragma once

#include "fake_files.h"
#include "fake_registry.h"
#include "fake_services.h"
#include "platform/clock.h"
#include "platform/event_logs.h"
#include "platform/machine.h"
#include "platform/processes.h"
#include "platform/session.h"
#include "platform/system_info.h"
#include "services/user_prompts.h"

#include <QHash>
#include <QStringBuilder>

#include <algorithm>
#include <atomic>
#include <functional>
#include <map>
#include <vector>

namespace quoril::test {

/// Time by hand. A sleep takes no time of its own: it is logged ("sleep 1000") and moves the clock.
class FakeClock : public FakePart<Clock>
{
public:
    using FakePart::FakePart;

    /// Sets the wall clock, in seconds since 1970-01-01 UTC.
    void setNow(qint64 seconds) { m_milliseconds = seconds * 1000; }
    void advance(quint32 milliseconds)
    {
        m_milliseconds += milliseconds;
        m_ticks += milliseconds;
    }

    /// Real milliseconds per millisecond of a window timer; 0 fires a timer as soon as the event loop is
    /// free.
    double timerScale = 0;
    /// The periods that window timers were asked for, in order.
    mutable std::vector<quint32> timers;
    std::function<void()> onNow; ///< called when somebody asks for the wall clock
    std::function<void()> onSleep; ///< called while somebody sleeps
    /// Real milliseconds per millisecond of an interruptible wait. Not changed while a thread may wait.
    double waitScale = 0.01;

    qint64 now() const override
    {
        if (onNow)
            onNow();
        return m_milliseconds / 1000;
    }
    quint64 tickCount() const override { return m_ticks; }
    void sleep(quint32 milliseconds) override
    {
        m_calls.log(u"sleep "_s + QString::number(milliseconds));
        if (onSleep)
            onSleep();
        advance(milliseconds);
    }
    void wait(quint32 milliseconds, std::unique_lock<std::mutex>& lock, std::condition_variable& wake,
        const std::function<bool()>& ended) override
    {
        wake.wait_for(lock, std::chrono::duration<double, std::milli>(milliseconds * waitScale), ended);
    }
    int timerInterval(quint32 milliseconds) const override
    {
        timers.push_back(milliseconds);
        return int(milliseconds * timerScale);
    }

private:
    std::atomic<qint64> m_milliseconds{1'700'000'000'000};
    std::atomic<quint64> m_ticks{1000};
};

class FakeProcess : public FakeHandle<Process>
{
public:
    FakeProcess(FakeCalls& calls, FakeClock& clock, quint32 exitCode, quint32 runsFor)
        : FakeHandle(calls)
        , m_clock(clock)
        , m_exitCode(exitCode)
        , m_end(clock.tickCount() + runsFor)
    {
    }

    bool wait(quint32 milliseconds) override
    {
        m_calls.log(u"wait "_s + QString::number(milliseconds));
        const quint64 now = m_clock.tickCount();
        if (now < m_end)
            m_clock.advance(quint32(std::min<quint64>(milliseconds, m_end - now)));
        return m_clock.tickCount() >= m_end;
    }
    Result<quint32> exitCode() override
    {
        return m_calls.attempt<Result<quint32>>(
            {}, [this] { return m_clock.tickCount() < m_end ? StillActive : m_exitCode; });
    }
    // Nobody above the platform looks at what was ended.
    Status terminate(quint32 exitCode) override
    {
        return m_calls.attempt<Status>(u"terminate "_s + QString::number(exitCode), [] { return Status(); });
    }

private:
    FakeClock& m_clock;
    quint32 m_exitCode;
    quint64 m_end;
};

/// Processes that run for a time of the manual clock and end with an exit code. Log: "create APP|COMMAND
/// LINE", "wait 30000", "terminate CODE".
class FakeProcesses : public FakePart<Processes>
{
public:
    FakeProcesses(FakeCalls& calls, FakeClock& clock) : FakePart(calls), m_clock(clock) { }

    quint32 createError = error::Success;
    quint32 unfitError = error::Success; ///< of what canRun() is asked about
    quint32 exitCode = 0;
    quint32 runsFor = 0; ///< milliseconds from its creation to its end

    Result<std::unique_ptr<Process>> create(QStringView applicationName, QStringView commandLine) override
    {
        using Given = Result<std::unique_ptr<Process>>;
        return m_calls.attempt<Given>(u"create "_s % applicationName % u'|' % commandLine, [this]() -> Given {
            if (createError)
                return Error{createError, {}};
            return Given(std::make_unique<FakeProcess>(m_calls, m_clock, exitCode, runsFor));
        });
    }
    Status canRun(QStringView) const override { return unfitError ? Error{unfitError, {}} : Status(); }

private:
    FakeClock& m_clock;
};

class FakeSystemInfo : public FakePart<SystemInfo>
{
public:
    using FakePart::FakePart;

    QString name = QStringLiteral("HOST");
    /// The system's texts, without the line end that errorText() adds.
    QHash<quint32, QString> texts{{error::FileNotFound, QStringLiteral("File not found.")},
        {error::AccessDenied, QStringLiteral("Access is denied.")}};
    QHash<QString, QString> fileVersions; ///< by host path
    SystemVersion systemVersion;
    ProcessorInfo processorInfo;
    quint64 memory = 0;

    Result<QString> computerName() const override
    {
        return m_calls.attempt<Result<QString>>({}, [this] { return name; });
    }
    Result<SystemVersion> version() const override
    {
        return m_calls.attempt<Result<SystemVersion>>({}, [this] { return systemVersion; });
    }
    ProcessorInfo processors() const override { return processorInfo; }
    Result<quint64> physicalMemory() const override
    {
        return m_calls.attempt<Result<quint64>>({}, [this] { return memory; });
    }
    QString windowsDirectory() const override { return QStringLiteral("C:\\Windows"); }
    Result<QString> programVersion(const QString& hostPath) const override
    {
        return m_calls.attempt<Result<QString>>({}, [&]() -> Result<QString> {
            if (!fileVersions.contains(hostPath))
                return Error{error::FileNotFound, {}};
            return fileVersions.value(hostPath);
        });
    }
    QString errorText(quint32 number) const override
    {
        return texts.contains(number) ? texts.value(number) + u"\r\n"_s : QString();
    }
};

class FakeWindow : public FakePart<ForeignWindow>
{
public:
    FakeWindow(FakeCalls& calls, QStringView title, bool iconic)
        : FakePart(calls)
        , m_title(title.toString())
        , m_iconic(iconic)
    {
    }
    bool isIconic() const override { return m_iconic; }
    void restore() override { m_calls.log(u"restore "_s + m_title); }
    void bringForward() override { m_calls.log(u"bring forward "_s + m_title); }

private:
    QString m_title;
    bool m_iconic;
};

/// The session. Log: "broadcast MESSAGE [past hung windows]", "lock workstation", "restore TITLE", "bring
/// forward TITLE".
class FakeSession : public FakePart<Session>
{
public:
    using FakePart::FakePart;

    QString userLanguage = QStringLiteral("ENU");
    QString systemLanguage = QStringLiteral("ENU");
    QHash<QString, bool> windows; ///< title to whether it is iconic

    int subscriptions() const { return int(m_handlers.size()); }

    QString abbreviatedLanguageName(Locale locale) const override
    {
        return locale == Locale::UserDefault ? userLanguage : systemLanguage;
    }
    std::unique_ptr<ForeignWindow> findWindow(QStringView title) override
    {
        const auto found = windows.find(title.toString());
        return found == windows.end() ? nullptr : std::make_unique<FakeWindow>(m_calls, title, *found);
    }
    std::unique_ptr<MessageSubscription> subscribe(
        QStringView message, std::function<void()> handler) override
    {
        m_handlers.push_back(std::make_shared<Handler>(message.toString(), std::move(handler)));
        const auto end = [this, handler = m_handlers.back()](void*) { std::erase(m_handlers, handler); };
        auto subscription = std::make_unique<Subscription>();
        subscription->end = std::shared_ptr<void>(nullptr, end);
        return subscription;
    }
    void broadcast(QStringView message, HungWindows hung) override
    {
        m_calls.log(
            u"broadcast "_s % message % (hung == HungWindows::AreAwaited ? u""_s : u" past hung windows"_s));
        for (const auto& handler : std::vector(m_handlers)) {
            if (handler->first == message)
                handler->second();
        }
    }
    LockKeys lockKeys() const override { return {}; }
    Status lockWorkstation() override
    {
        return m_calls.attempt<Status>(u"lock workstation"_s, [] { return Status(); });
    }

private:
    using Handler = std::pair<QString, std::function<void()>>;
    struct Subscription : MessageSubscription
    {
        std::shared_ptr<void> end; ///< its deleter takes the handler away
    };
    std::vector<std::shared_ptr<Handler>> m_handlers;
};

class FakeEventLog : public FakeHandle<EventLog>
{
public:
    FakeEventLog(FakeCalls& calls, const std::vector<EventEntry>& entries, EventSpan span)
        : FakeHandle(calls)
        , m_entries(entries)
        , m_span(span)
    {
    }
    bool next(EventEntry& entry) override
    {
        if (m_calls.note({}))
            return false;
        while (m_next < m_entries.size()) {
            entry = m_entries[m_next++];
            if (m_span.contains(entry.timeGenerated))
                return true;
        }
        return false;
    }

private:
    const std::vector<EventEntry>& m_entries;
    EventSpan m_span;
    std::size_t m_next = 0;
};

/// Event logs in memory, "System" and "Application".
class FakeEventLogs : public FakePart<EventLogs>
{
public:
    using FakePart::FakePart;
    using Entries = std::vector<EventEntry>;

    /// The entries by the log's name, the oldest first. A log that isn't there can't be opened.
    std::map<QString, Entries> logs{{QStringLiteral("System"), {}}, {QStringLiteral("Application"), {}}};

    Result<std::unique_ptr<EventLog>> open(QStringView name, EventSpan span) override
    {
        using Given = Result<std::unique_ptr<EventLog>>;
        return m_calls.attempt<Given>(u"open log "_s % name, [&]() -> Given {
            const auto found = logs.find(name.toString());
            if (found == logs.end())
                return Error{error::FileNotFound, {}};
            return Given(std::make_unique<FakeEventLog>(m_calls, found->second, span));
        });
    }
    // Nobody above the platform reports an event.
    Status report(QStringView, const EventEntry&) override { return Error{error::AccessDenied, {}}; }
};

/// A machine that holds nothing but what a test puts into it. All its parts share one log, one count of open
/// handles and one plan of failure. It is in force while it lives, and all must be closed at its end; make
/// one for each case.
class FakeMachine : public Machine
{
public:
    ~FakeMachine() override { EXPECT_EQ(calls.open(), 0) << "left open"; }

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
    ServiceScript& addInstance(const QString& name, const QStringList& prerequisites = {})
    {
        const QString path = u"SYSTEM\\CurrentControlSet\\Services\\"_s + name;
        fakeRegistry.load(
            u"[%1]\nGroup=TargetPlatformEmulator\nDependOnService=multi:%2\n[%1\\Parameters]\nTargetPlatformEmulator=sample"_s
                .arg(path, prerequisites.join(u'|')));
        ServiceScript& service = fakeServices.service(name);
        service.config.dependencies = prerequisites;
        return service;
    }

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

/// Records what is said to the person, in the machine's log ("inform TEXT 2000", "message TEXT", "ask TEXT",
/// "confirm NAME"), lets the time of an information box pass, and answers each question from the script, then
/// with yes.
class RecordingPrompts : public UserPrompts
{
public:
    explicit RecordingPrompts(FakeMachine& machine) : m_machine(machine) { }

    std::vector<bool> answers;

    void inform(const QString& text, quint32 periodMilliseconds) override
    {
        m_machine.calls.log(u"inform "_s + text + u' ' + QString::number(periodMilliseconds));
        m_machine.fakeClock.advance(periodMilliseconds + 1000);
    }
    void message(const QString& text) override { m_machine.calls.log(u"message "_s + text); }
    bool ask(const QString& question) override { return answer(u"ask "_s + question); }
    bool confirmRemoval(const QString& serviceName) override { return answer(u"confirm "_s + serviceName); }

private:
    bool answer(const QString& asked)
    {
        m_machine.calls.log(asked);
        if (answers.empty())
            return true;
        const bool next = answers.front();
        answers.erase(answers.begin());
        return next;
    }
    FakeMachine& m_machine;
};

} // namespace quoril::test
