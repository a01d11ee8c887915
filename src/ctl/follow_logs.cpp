#include "ctl/log_choice.h"

#include "ctl/subcommand.h"
#include "logs/app_event_log.h"
#include "logs/log_follower.h"
#include "logs/log_table.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/machine.h"
#include "services/service_info.h"

#include <QJsonArray>

#include <atomic>
#include <csignal>
#include <map>
#include <tuple>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

// Two looks a second show each row within one.
constexpr quint32 SleepMilliseconds = 100;
constexpr int SleepsBetweenLooks = 5;
// An event may be written a while after the time that it bears.
constexpr qint64 EventWindowSeconds = 60;

std::atomic<bool> interrupted = false;

/// Has Ctrl+C end the loop instead of the process.
class InterruptGuard
{
public:
    InterruptGuard()
    {
        interrupted = false;
        m_before = std::signal(SIGINT, [](int) { interrupted = true; });
    }
    ~InterruptGuard() { std::signal(SIGINT, m_before); }
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;

private:
    void (*m_before)(int);
};

/// Distinguishes the new events of a Windows log from earlier ones.
class EventFollower
{
public:
    explicit EventFollower(QStringView name) : m_name(name) { look(); }

    /// What came since the last time.
    EventRecords look()
    {
        EventRecords news;
        std::map<Line, int> present;
        const qint64 now = machine().clock().now();
        walkEventLines(m_name, now - EventWindowSeconds, now,
            [&](quint16 type, quint32 eventId, qint64 time, QStringView text) {
                const Line line{time, eventId, type, text.toString()};
                const auto known = m_known.find(line);
                if (++present[line] > (known == m_known.end() ? 0 : known->second))
                    news.append(type, eventId, time, text);
            });
        m_known = std::move(present);
        return news;
    }

private:
    using Line = std::tuple<qint64, quint32, quint16, QString>;

    QStringView m_name;
    std::map<Line, int> m_known; ///< how often each line stands in the window
};

struct Followed
{
    QString name;
    LogFollower log;
};

/// Shows what is there of an instance, and follows its log from there.
Followed begin(ServiceInfo& service, std::optional<LogRange> range, LogPrinter& printer)
{
    if (const auto log = machine().files().openForReading(service.LogFile); log && range)
        range = wholeLinesOf(**log, {range->begin, wholeLog(**log).end});
    LogTableBuilder table;
    table.addWindowsLogs(service);
    table.addEmulatorLog(service, range);
    printer.print(service.Name, table.take());
    return {service.Name, LogFollower(service.LogFile, range)};
}

PanelTable newRows(LogFollower& log)
{
    LogTableBuilder table;
    log.poll([&table](const LogHeader& message, const QString& text) {
        table.AddLogRow(logDateText(message.time), message.codeText, text, RowSeverity(message.level));
    });
    return table.take();
}

} // namespace

int followLogs(Ctl& ctl, const std::vector<ServiceInfo*>& services, const LogChoice& choice)
{
    using Form = LogPrinter::Form;
    const Form text = services.size() > 1 ? Form::NamedText : Form::Text;
    LogPrinter printer(ctl.console, ctl.json ? Form::JsonLines : text, choice.filter);
    const InterruptGuard guard;
    std::vector<Followed> followed;
    EventFollower events[] = {EventFollower(u"System"), EventFollower(u"Application")};
    for (ServiceInfo* const service : services) {
        std::optional<LogRange> range;
        if (!chooseLogs(ctl, *service, choice, range))
            return exit_code::Failed;
        followed.push_back(begin(*service, range, printer));
    }
    printer.takeAllRows();
    // The events are the machine's: with several instances they are no one's.
    const QString eventName = services.size() == 1 ? services.front()->Name : u"-"_s;
    for (int sleeps = 0; ctl.console.flush() && !interrupted; ++sleeps) {
        machine().clock().sleep(SleepMilliseconds);
        if (sleeps % SleepsBetweenLooks != 0)
            continue;
        for (EventFollower& log : events) {
            LogTableBuilder table;
            table.addEventRows(log.look());
            printer.print(eventName, table.take());
        }
        for (Followed& each : followed)
            printer.print(each.name, newRows(each.log));
    }
    return interrupted ? exit_code::Interrupted : exit_code::Done;
}

} // namespace quoril
