#include "fake_machine.h"

#include <QBuffer>
#include <QStringBuilder>

#include <algorithm>

namespace quoril::test {

using namespace Qt::StringLiterals;

namespace {

class FakeProcess : public Process
{
public:
    FakeProcess(FakeCalls& calls, FakeClock& clock, quint32 exitCode, quint32 runsFor)
        : m_calls(calls)
        , m_clock(clock)
        , m_exitCode(exitCode)
        , m_end(clock.tickCount() + runsFor)
        , m_mark(calls)
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
        if (const auto failure = m_calls.note({}))
            return *failure;
        return m_clock.tickCount() < m_end ? StillActive : m_exitCode;
    }
    Status terminate(quint32 exitCode) override
    {
        if (const auto failure = m_calls.note(u"terminate "_s + QString::number(exitCode)))
            return *failure;
        m_end = m_clock.tickCount();
        m_exitCode = exitCode;
        return {};
    }

private:
    FakeCalls& m_calls;
    FakeClock& m_clock;
    quint32 m_exitCode;
    quint64 m_end;
    OpenMark m_mark;
};

/// Works on the bytes of a file that it keeps alive.
class FakeFile : public QBuffer
{
public:
    FakeFile(FakeCalls& calls, std::shared_ptr<QByteArray> content, OpenMode mode, qint64 failsAt = -1)
        : QBuffer(content.get())
        , m_content(std::move(content))
        , m_failsAt(failsAt)
        , m_mark(calls)
    {
        open(mode);
    }
    ~FakeFile() override { close(); }

protected:
    qint64 readData(char* data, qint64 size) override
    {
        if (m_failsAt >= 0)
            size = std::min(size, m_failsAt - pos());
        return m_failsAt >= 0 && size <= 0 ? -1 : QBuffer::readData(data, size);
    }

private:
    std::shared_ptr<QByteArray> m_content;
    qint64 m_failsAt;
    OpenMark m_mark;
};

class FakeWindow : public ForeignWindow
{
public:
    FakeWindow(FakeCalls& calls, QString title, bool& iconic)
        : m_calls(calls)
        , m_title(std::move(title))
        , m_iconic(iconic)
    {
    }
    bool isIconic() const override { return m_iconic; }
    void restore() override
    {
        m_iconic = false;
        m_calls.log(u"restore "_s + m_title);
    }
    void bringForward() override { m_calls.log(u"bring forward "_s + m_title); }

private:
    FakeCalls& m_calls;
    QString m_title;
    bool& m_iconic;
};

class FakeSubscription : public MessageSubscription
{
public:
    explicit FakeSubscription(std::function<void()> end) : m_end(std::move(end)) { }
    ~FakeSubscription() override { m_end(); }

private:
    std::function<void()> m_end;
};

class FakeEventLog : public EventLog
{
public:
    FakeEventLog(FakeCalls& calls, const FakeEventLogs::Entries& entries, EventSpan span)
        : m_calls(calls)
        , m_entries(entries)
        , m_span(span)
        , m_mark(calls)
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
    FakeCalls& m_calls;
    const FakeEventLogs::Entries& m_entries;
    EventSpan m_span;
    std::size_t m_next = 0;
    OpenMark m_mark;
};

} // namespace

void FakeClock::advance(quint32 milliseconds)
{
    m_milliseconds += milliseconds;
    m_ticks += milliseconds;
}

void FakeClock::sleep(quint32 milliseconds)
{
    m_calls.log(u"sleep "_s + QString::number(milliseconds));
    if (onSleep)
        onSleep();
    advance(milliseconds);
}

void FakeClock::wait(quint32 milliseconds, std::unique_lock<std::mutex>& lock, std::condition_variable& wake,
    const std::function<bool()>& ended)
{
    wake.wait_for(lock, std::chrono::duration<double, std::milli>(milliseconds * waitScale), ended);
}

int FakeClock::timerInterval(quint32 milliseconds) const
{
    timers.push_back(milliseconds);
    return int(milliseconds * timerScale);
}

Result<std::unique_ptr<Process>> FakeProcesses::create(QStringView applicationName, QStringView commandLine)
{
    if (const auto failure = m_calls.note(u"create "_s % applicationName % u'|' % commandLine))
        return *failure;
    if (createError)
        return Error{createError, {}};
    return std::unique_ptr<Process>(std::make_unique<FakeProcess>(m_calls, m_clock, exitCode, runsFor));
}

QString FakeFiles::normal(QStringView path)
{
    return path.toString().toLower().replace(u'/', u'\\');
}

void FakeFiles::put(QStringView path, const QByteArray& content)
{
    m_files[normal(path)] = std::make_shared<QByteArray>(content);
}

std::optional<QByteArray> FakeFiles::content(QStringView path) const
{
    const auto found = m_files.find(normal(path));
    return found == m_files.end() ? std::nullopt : std::optional(*found->second);
}

Result<std::unique_ptr<QIODevice>> FakeFiles::openForReading(QStringView path)
{
    if (const auto failure = m_calls.note({}))
        return *failure;
    const auto found = m_files.find(normal(path));
    if (found == m_files.end())
        return Error{error::FileNotFound, {}};
    return std::unique_ptr<QIODevice>(
        std::make_unique<FakeFile>(m_calls, found->second, QIODevice::ReadOnly, readsFailAt));
}

Result<std::unique_ptr<QIODevice>> FakeFiles::openForWriting(QStringView path)
{
    if (const auto failure = m_calls.note({}))
        return *failure;
    const QString name = normal(path);
    if (m_missing.contains(name.left(name.lastIndexOf(u'\\'))))
        return Error{error::PathNotFound, {}};
    const auto content = m_files[name] = std::make_shared<QByteArray>();
    return std::unique_ptr<QIODevice>(std::make_unique<FakeFile>(m_calls, content, QIODevice::WriteOnly));
}

Status FakeFiles::remove(QStringView path)
{
    if (const auto failure = m_calls.note({}))
        return *failure;
    return m_files.erase(normal(path)) ? Status() : Status(Error{error::FileNotFound, {}});
}

Result<QStringList> FakeFiles::find(QStringView pattern)
{
    if (const auto failure = m_calls.note({}))
        return *failure;
    const QString wanted = normal(pattern);
    const qsizetype star = wanted.indexOf(u'*');
    QStringList names;
    for (const auto& [path, content] : m_files) {
        if (path.startsWith(wanted.left(star)) && path.endsWith(wanted.mid(star + 1))
            && path.indexOf(u'\\', star) < 0)
            names.append(path.mid(star));
    }
    return names.isEmpty() ? Result<QStringList>(Error{error::FileNotFound, {}}) : names;
}

Result<QString> FakeFiles::fileVersion(QStringView path)
{
    if (const auto failure = m_calls.note({}))
        return *failure;
    const auto found = fileVersions.constFind(normal(path));
    return found == fileVersions.cend() ? Result<QString>(Error{error::ResourceDataNotFound, {}}) : *found;
}

Status FakeFiles::setCurrentDirectory(QStringView path)
{
    if (const auto failure = m_calls.note(u"change directory "_s % path))
        return *failure;
    if (m_missing.contains(normal(path)))
        return Error{error::PathNotFound, {}};
    currentDirectory = path.toString();
    return {};
}

Result<QString> FakeFiles::hostPath(QStringView path) const
{
    if (!m_files.contains(normal(path)))
        return Error{error::FileNotFound, {}};
    return u"/machine"_s + path.mid(2).toString().replace(u'\\', u'/');
}

Result<QString> FakeFiles::machinePath(const QString& hostPath) const
{
    if (!hostPath.startsWith(u"/machine/"))
        return Error{error::PathNotFound, {}};
    return u"C:"_s + hostPath.mid(8).replace(u'/', u'\\');
}

Result<QString> FakeSystemInfo::computerName() const
{
    if (const auto failure = m_calls.note({}))
        return *failure;
    return name;
}

Result<SystemVersion> FakeSystemInfo::version() const
{
    if (const auto failure = m_calls.note({}))
        return *failure;
    return systemVersion;
}

Result<quint64> FakeSystemInfo::physicalMemory() const
{
    if (const auto failure = m_calls.note({}))
        return *failure;
    return memory;
}

Result<QString> FakeSystemInfo::fileVersion(const QString& hostPath) const
{
    if (const auto failure = m_calls.note({}))
        return *failure;
    if (!fileVersions.contains(hostPath))
        return Error{error::FileNotFound, {}};
    return fileVersions.value(hostPath);
}

QString FakeSystemInfo::errorText(quint32 number) const
{
    const auto found = texts.constFind(number);
    return found == texts.cend() ? QString() : *found + u"\r\n"_s;
}

QString FakeSession::abbreviatedLanguageName(Locale locale) const
{
    return locale == Locale::UserDefault ? userLanguage : systemLanguage;
}

std::unique_ptr<ForeignWindow> FakeSession::findWindow(QStringView title)
{
    const auto found = windows.find(title.toString());
    return found == windows.end() ? nullptr : std::make_unique<FakeWindow>(m_calls, found.key(), *found);
}

std::unique_ptr<MessageSubscription> FakeSession::subscribe(
    QStringView message, std::function<void()> handler)
{
    const int id = m_nextHandler++;
    m_handlers->emplace(id, std::pair(message.toString(), std::move(handler)));
    return std::make_unique<FakeSubscription>([handlers = m_handlers, id] { handlers->erase(id); });
}

void FakeSession::broadcast(QStringView message, HungWindows hung)
{
    m_calls.log(
        u"broadcast "_s % message % (hung == HungWindows::AreAwaited ? u""_s : u" past hung windows"_s));
    for (const auto& [id, subscription] : Handlers(*m_handlers)) {
        if (subscription.first == message)
            subscription.second();
    }
}

Status FakeSession::lockWorkstation()
{
    if (const auto failure = m_calls.note(u"lock workstation"_s))
        return *failure;
    return {};
}

Result<std::unique_ptr<EventLog>> FakeEventLogs::open(QStringView name, EventSpan span)
{
    if (const auto failure = m_calls.note(u"open log "_s % name))
        return *failure;
    const auto found = logs.find(name.toString());
    if (found == logs.end())
        return Error{error::FileNotFound, {}};
    return std::unique_ptr<EventLog>(std::make_unique<FakeEventLog>(m_calls, found->second, span));
}

Status FakeEventLogs::report(QStringView name, const EventEntry& entry)
{
    if (const auto failure = m_calls.note(u"report "_s % name))
        return *failure;
    Entries& entries = logs[name.toString()];
    entries.push_back(entry);
    entries.back().recordNumber = quint32(entries.size());
    return {};
}

FakeServiceControl::Script& FakeMachine::addInstance(const QString& name, const QStringList& prerequisites)
{
    const QString path = u"SYSTEM\\CurrentControlSet\\Services\\"_s + name;
    fakeRegistry.load(
        u"[%1]\nGroup=TargetPlatformEmulator\nDependOnService=multi:%2\n[%1\\Parameters]\nTargetPlatformEmulator=sample"_s
            .arg(path, prerequisites.join(u'|')));
    FakeServiceControl::Script& service = fakeServices.service(name);
    service.config.dependencies = prerequisites;
    return service;
}

void RecordingPrompts::inform(const QString& text, quint32 periodMilliseconds)
{
    m_machine.calls.log(u"inform "_s + text + u' ' + QString::number(periodMilliseconds));
    m_machine.fakeClock.advance(periodMilliseconds + 1000);
}

void RecordingPrompts::message(const QString& text)
{
    m_machine.calls.log(u"message "_s + text);
}

bool RecordingPrompts::ask(const QString& question)
{
    m_machine.calls.log(u"ask "_s + question);
    return answer();
}

bool RecordingPrompts::confirmRemoval(const QString& serviceName)
{
    m_machine.calls.log(u"confirm "_s + serviceName);
    return answer();
}

bool RecordingPrompts::answer()
{
    if (answers.empty())
        return true;
    const bool next = answers.front();
    answers.erase(answers.begin());
    return next;
}

} // namespace quoril::test
