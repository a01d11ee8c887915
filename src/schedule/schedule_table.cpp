#include "schedule/schedule_table.h"

#include "platform/clock.h"
#include "platform/machine.h"

#include <algorithm>
#include <system_error>

namespace quoril {

namespace {

constexpr quint32 PauseMilliseconds = 1000;

int carryOut(SchedStruct& order)
{
    if (order.Action == schedule_action::Start)
        return order.StartNow();
    return order.Action == schedule_action::Stop ? order.StopNow() : 0;
}

} // namespace

ScheduleTable::~ScheduleTable()
{
    endWorker();
    if (m_worker.joinable())
        m_worker.join();
}

OrderId ScheduleTable::add(SchedStruct order)
{
    const std::lock_guard lock(m_guard);
    m_entries.push_back({++m_lastId, State::Waiting, std::move(order)});
    return m_lastId;
}

std::size_t ScheduleTable::remove(std::span<const OrderId> ids)
{
    std::vector<OrderId> sorted(ids.begin(), ids.end());
    std::sort(sorted.begin(), sorted.end());
    const std::lock_guard lock(m_guard);
    return std::erase_if(m_entries, [&](const Entry& entry) {
        return entry.state == State::Waiting && std::binary_search(sorted.begin(), sorted.end(), entry.id);
    });
}

std::vector<ScheduledOrder> ScheduleTable::orders() const
{
    std::vector<ScheduledOrder> shown;
    const std::lock_guard lock(m_guard);
    shown.reserve(m_entries.size());
    for (const Entry& entry : m_entries) {
        if (entry.state != State::Spent)
            shown.push_back({entry.id, entry.order.Name, entry.order.SchedTime, entry.order.Action});
    }
    return shown;
}

Status ScheduleTable::StartScheduleWorker()
{
    if (WorkerHandle)
        return *WorkerHandle;
    WorkerHandle = Status();
    try {
        m_worker = std::thread(&ScheduleTable::ScheduleWorker, this);
    } catch (const std::system_error&) {
        WorkerHandle = Error{error::NotEnoughMemory, {}}; // the system has no thread left
    }
    return *WorkerHandle;
}

void ScheduleTable::endWorker()
{
    {
        const std::lock_guard lock(m_guard);
        WorkerRun = false;
    }
    m_wake.notify_all();
}

void ScheduleTable::ScheduleWorker()
{
    std::unique_lock lock(m_guard);
    while (WorkerRun) {
        lock.unlock();
        runPass();
        lock.lock();
        machine().clock().wait(PauseMilliseconds, lock, m_wake, [this] { return !WorkerRun; });
    }
}

void ScheduleTable::runPass()
{
    for (const OrderId id : dueAt(machine().clock().now())) {
        std::optional<SchedStruct> order = take(id);
        if (!order)
            continue; // removed since the pass began
        const int result = carryOut(*order);
        if (m_observer)
            m_observer(id, *order, result);
        markSpent(id);
    }
    purge();
}

std::vector<OrderId> ScheduleTable::dueAt(qint64 now) const
{
    std::vector<OrderId> due;
    const std::lock_guard lock(m_guard);
    for (const Entry& entry : m_entries) {
        if (entry.order.SchedTime <= now)
            due.push_back(entry.id);
    }
    return due;
}

std::optional<SchedStruct> ScheduleTable::take(OrderId id)
{
    const std::lock_guard lock(m_guard);
    Entry* const entry = find(id);
    if (!entry)
        return std::nullopt;
    entry->state = State::CarriedOut;
    return entry->order;
}

void ScheduleTable::markSpent(OrderId id)
{
    const std::lock_guard lock(m_guard);
    if (Entry* const entry = find(id)) {
        entry->state = State::Spent;
        entry->order.SchedTime = 0;
    }
}

void ScheduleTable::purge()
{
    // Not by the time of 0, which an order for the first second of 1970 has from the start.
    const std::lock_guard lock(m_guard);
    std::erase_if(m_entries, [](const Entry& entry) { return entry.state == State::Spent; });
}

ScheduleTable::Entry* ScheduleTable::find(OrderId id)
{
    const auto found = std::lower_bound(m_entries.begin(), m_entries.end(), id,
        [](const Entry& entry, OrderId wanted) { return entry.id < wanted; });
    return found != m_entries.end() && found->id == id ? &*found : nullptr;
}

} // namespace quoril
