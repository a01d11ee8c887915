#pragma once

#include "formats/error.h"
#include "services/service_info.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <span>
#include <thread>
#include <vector>

namespace quoril {

namespace schedule_action {
inline constexpr qint32 Start = 1;
inline constexpr qint32 Stop = 2;
} // namespace schedule_action

/// One timed order: a copy of the service's record, taken when the order was made, with what is to be done to
/// it and when. A change of the catalogue doesn't reach it.
class SchedStruct : public ServiceInfo
{
public:
    SchedStruct() = default;
    SchedStruct(const ServiceInfo& service, qint64 time, qint32 action)
        : ServiceInfo(service)
        , SchedTime(time)
        , Action(action)
    {
    }

    qint64 SchedTime = 0; ///< when it is due, in seconds since 1970 UTC; 0 once it is spent
    qint32 Action = 0; ///< a number of schedule_action; any other does nothing
};

/// Distinguishes one order from every other of the same table, for good: unlike its place it never changes,
/// and it is never given again.
using OrderId = quint64;

/// What is shown of an order.
struct ScheduledOrder
{
    OrderId id = 0;
    QString name; ///< of the service
    qint64 time = 0; ///< seconds since 1970 UTC
    qint32 action = 0;
};

/// The orders of this run and the one thread that carries them out. Orders live in memory only and in the
/// order in which they were added.
///
/// All operations may be called from any thread. A guard keeps them apart; it is never held while the service
/// manager is asked, so nobody waits for that one here.
class ScheduleTable
{
public:
    ScheduleTable() = default;
    /// Ends the worker and waits for the pass that is under way.
    ~ScheduleTable();
    ScheduleTable(const ScheduleTable&) = delete;
    ScheduleTable& operator=(const ScheduleTable&) = delete;

    /// What is called after each order that was carried out, with the order's copy of the service and what
    /// its call gave: 0, or 1 with the failure's text in the copy. It is called from the worker's thread.
    using OutcomeObserver = std::function<void(OrderId id, const SchedStruct& order, int result)>;

    /// Before the worker is started.
    void setOutcomeObserver(OutcomeObserver observer) { m_observer = std::move(observer); }

    /// Puts the order at the end of the table. A time that is past already fires in the next pass.
    OrderId add(SchedStruct order);

    /// Takes away exactly the orders of the identities that still wait, and says how many those were. An
    /// order that is spent, or that is being carried out, is none of them.
    std::size_t remove(std::span<const OrderId> ids);

    /// The orders in their order, those that are spent left out.
    std::vector<ScheduledOrder> orders() const;

    /// Starts the worker, which needs the machine in force until its end. It is started at most once in the
    /// life of the table: later calls give what the first one gave. 8 if the system has no thread left.
    Status StartScheduleWorker();

    /// Lets the worker end: at once from its pause, else after the pass that is under way. Doesn't wait.
    void endWorker();

    /// One pass by the wall clock, which is read once: carries out what is due in the table's order, each
    /// call finished before the next begins, and purges it. Results of the calls are for the observer alone:
    /// an order fires once, whatever came of it. Orders that are added meanwhile wait for the next pass. The
    /// worker calls this once a second; no two passes may run at the same time.
    void runPass();

private:
    enum class State
    {
        Waiting,
        CarriedOut,
        Spent
    };

    struct Entry
    {
        OrderId id;
        State state;
        SchedStruct order;
    };

    void ScheduleWorker();
    std::vector<OrderId> dueAt(qint64 now) const;
    std::optional<SchedStruct> take(OrderId id);
    void markSpent(OrderId id);
    void purge();
    Entry* find(OrderId id); ///< under the guard

    mutable std::mutex m_guard; ///< of everything below but the thread
    std::condition_variable m_wake;
    std::vector<Entry> m_entries; ///< by ascending identity
    OrderId m_lastId = 0;
    bool WorkerRun = true;

    OutcomeObserver m_observer; ///< not changed once the worker runs
    std::optional<Status> WorkerHandle; ///< how the start went; the calling thread's alone, like the thread
    std::thread m_worker;
};

} // namespace quoril
