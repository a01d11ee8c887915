#pragma once

#include "formats/error.h"

#include <QRegularExpression>
#include <QStringList>

#include <atomic>
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
        if (!call.isEmpty())
            log(call);
        return ++m_count == m_failAt ? std::make_optional(Error{m_failWith, {}}) : std::nullopt;
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
        m_count = 0;
        m_failAt = n;
        m_failWith = number;
    }
    /// The calls since the last failAt().
    int count() const { return m_count; }
    /// The log so far, or what the pattern is found in of it; the log begins anew.
    QStringList takeLog(const QString& pattern = {})
    {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_log, {}).filter(QRegularExpression(pattern));
    }
    /// Handles, keys, locks, logs and files that are open.
    int open() const { return m_open; }
    void opened(int by) { m_open += by; }

private:
    std::mutex m_mutex;
    QStringList m_log;
    std::atomic<int> m_count = 0, m_failAt = 0, m_open = 0;
    std::atomic<quint32> m_failWith = error::AccessDenied;
};

/// Counts as open for as long as it lives.
class OpenMark
{
public:
    explicit OpenMark(FakeCalls& calls) : m_calls(calls) { calls.opened(1); }
    ~OpenMark() { m_calls.opened(-1); }
    OpenMark(const OpenMark&) = delete;

private:
    FakeCalls& m_calls;
};

/// A part of a FakeMachine.
template <typename Interface> class FakePart : public Interface
{
public:
    explicit FakePart(FakeCalls& calls) : m_calls(calls) { }

protected:
    FakeCalls& m_calls;
};

/// What a part has opened.
template <typename Interface> class FakeHandle : public FakePart<Interface>
{
protected:
    using FakePart<Interface>::FakePart;

private:
    OpenMark m_mark{this->m_calls};
};

} // namespace quoril::test
