// schedule.

#include "ctl/instances.h"
#include "ctl/moment.h"
#include "ctl/output.h"
#include "ctl/subcommand.h"
#include "platform/clock.h"
#include "platform/machine.h"
#include "resources/resource_module.h"
#include "resources/text_ids.h"
#include "services/service_app.h"

#include <condition_variable>
#include <deque>
#include <mutex>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

struct ScheduleOptions
{
    QStringList orders;
};

void declareSchedule(const CommandParser& parser, ScheduleOptions& options)
{
    parser
        .addTexts("orders", options.orders,
            "start@TIME=NAME or stop@TIME=NAME; TIME is 18:00, 2026-11-30T18:00 or +90s, +15m, +2h from now")
        .required()
        .valueName("ORDER");
}

/// What became of one order.
struct Outcome
{
    QString name;
    qint32 action = 0;
    qint64 time = 0; ///< when it was carried out
    QString failure; ///< empty for none
};

/// The outcomes on their way from the worker to the main thread.
class OutcomeQueue
{
public:
    void put(Outcome outcome)
    {
        {
            const std::lock_guard lock(m_guard);
            m_outcomes.push_back(std::move(outcome));
        }
        m_wake.notify_one();
    }
    Outcome take()
    {
        std::unique_lock lock(m_guard);
        m_wake.wait(lock, [this] { return !m_outcomes.empty(); });
        Outcome outcome = std::move(m_outcomes.front());
        m_outcomes.pop_front();
        return outcome;
    }

private:
    std::mutex m_guard;
    std::condition_variable m_wake;
    std::deque<Outcome> m_outcomes;
};

Outcome outcomeOf(const SchedStruct& order, int result)
{
    Outcome outcome{order.Name, order.Action, machine().clock().now(), {}};
    if (result != 0)
        outcome.failure = withReason(order.Message, order.Reason);
    return outcome;
}

void print(Ctl& ctl, std::optional<JsonArray>& array, const Outcome& outcome)
{
    const QString action = outcome.action == schedule_action::Start ? u"start"_s : u"stop"_s;
    const QString result = outcome.failure.isEmpty() ? u"done"_s : u"failed"_s;
    if (array) {
        array->add({{"time"_L1, momentText(outcome.time)}, {"action"_L1, action}, {"name"_L1, outcome.name},
            {"result"_L1, result}, {"message"_L1, outcome.failure}});
    } else {
        QString line = momentText(outcome.time) + u"  "_s + action.leftJustified(5) + u"  "_s + outcome.name
            + u"  "_s + result;
        if (!outcome.failure.isEmpty())
            line += u": "_s + outcome.failure;
        ctl.console.line(line, outcome.failure.isEmpty() ? LineStyle::Plain : LineStyle::Error);
    }
    // Whoever follows the run sees each outcome when it comes.
    ctl.console.flush();
}

int schedule(Ctl& ctl, const ScheduleOptions& options)
{
    std::vector<TimedOrder> orders;
    for (const QString& text : options.orders) {
        QString fault;
        const auto order = parseOrder(text, machine().clock().now(), fault);
        if (!order)
            return usageError(
                ctl, u"\"%1\" is not an order: %2; write for example start@18:00=NAME"_s.arg(text, fault));
        orders.push_back(*order);
    }
    Instances instances;
    if (!instances.read(ctl))
        return exit_code::Failed;
    OutcomeQueue outcomes;
    ScheduleTable table;
    table.setOutcomeObserver([&outcomes](OrderId, const SchedStruct& order, int result) {
        outcomes.put(outcomeOf(order, result));
    });
    for (const TimedOrder& order : orders) {
        const ServiceInfo* const service = instances.find(ctl, order.name);
        if (!service)
            return exit_code::Failed;
        table.add({*service, order.time, order.action});
    }
    if (const Status started = table.StartScheduleWorker(); !started)
        return failure(ctl, u"The orders can't be carried out."_s, started.errorNumber());
    int code = exit_code::Done;
    std::optional<JsonArray> array;
    if (ctl.json)
        array.emplace(ctl.console);
    for (std::size_t left = orders.size(); left > 0; --left) {
        const Outcome outcome = outcomes.take();
        print(ctl, array, outcome);
        if (!outcome.failure.isEmpty())
            code = exit_code::Failed;
    }
    return code;
}

} // namespace

void addScheduleSubcommand(Ctl& ctl, const CommandParser& parser)
{
    addSubcommand(ctl, parser, "schedule",
        "Start and stop instances at given times, and wait until all is done", Needs::Machine,
        declareSchedule, schedule);
}

} // namespace quoril
