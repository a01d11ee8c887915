#pragma once

#include "formats/error.h"

#include <QStringList>

#include <mutex>
#include <optional>

namespace quoril::test {

/// What the parts of a FakeMachine share: the log of the calls in their order, the plan that makes one call
/// fail, and the count of what is open.
class FakeCalls
{
public:
    /// Counts a call that can fail, and logs it unless the text is empty. The error that the plan has for it.
    std::optional<Error> note(const QString& call)
    {
        const std::lock_guard lock(m_mutex);
        if (!call.isEmpty())
            m_log.append(call);
        if (++m_count != m_failAt)
            return std::nullopt;
        return Error{m_failWith, {}};
    }
    /// What a call that can fail gives: the error that the plan has for it, or what it makes.
    template <typename Given, typename Make> Given attempt(const QString& call, const Make& make)
    {
        if (const auto failure = note(call))
            return *failure;
        return make();
    }
    /// Logs what can't fail.
    void log(const QString& event)
    {
        const std::lock_guard lock(m_mutex);
        m_log.append(event);
    }

    /// Makes the n-th call from now on fail, counted from 1; 0 for none.
    void failAt(int n, quint32 number = error::AccessDenied)
    {
        const std::lock_guard lock(m_mutex);
        m_count = 0;
        m_failAt = n;
        m_failWith = number;
    }
    /// The calls since the last failAt().
    int count() const
    {
        const std::lock_guard lock(m_mutex);
        return m_count;
    }
    /// The log so far; it begins anew.
    QStringList takeLog()
    {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_log, {});
    }
    /// Handles, keys, locks, logs and files that are open.
    int open() const
    {
        const std::lock_guard lock(m_mutex);
        return m_open;
    }
    void opened(int by)
    {
        const std::lock_guard lock(m_mutex);
        m_open += by;
    }

private:
    mutable std::mutex m_mutex;
    QStringList m_log;
    int m_count = 0;
    int m_failAt = 0;
    quint32 m_failWith = error::AccessDenied;
    int m_open = 0;
};

/// Counts as open for as long as it lives.
class OpenMark
{
public:
    explicit OpenMark(FakeCalls& calls) : m_calls(&calls) { calls.opened(1); }
    ~OpenMark() { m_calls->opened(-1); }
    OpenMark(const OpenMark&) = delete;
    OpenMark& operator=(const OpenMark&) = delete;

private:
    FakeCalls* m_calls;
};

} // namespace quoril::test
