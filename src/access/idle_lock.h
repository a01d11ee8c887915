#pragma once

#include <QtGlobal>

#include <span>

namespace quoril {

/// One idle time that can be chosen.
struct LockChoice
{
    qint32 index; ///< its place in the list; -1 ends the table and isn't shown
    quint32 textId;
    quint32 milliseconds; ///< 0: no lock
};

extern const std::span<const LockChoice> g_lock_choices;

/// Measures how long the console has been left alone, with two window timers of its window: the idle timer
/// ticks each second from the first idle moment on, its first tick arms the lock timer, and the lock timer's
/// firing locks. Activity kills both. After a lock the idle timer goes on, so that the lock is repeated as
/// long as nobody is there.
class IdleLock
{
public:
    static constexpr quint32 IdleTimerId = 1;
    static constexpr quint32 LockTimerId = 2;
    static constexpr quint32 IdlePeriod = 1000; ///< milliseconds

    IdleLock() = default;
    virtual ~IdleLock() = default;
    IdleLock(const IdleLock&) = delete;
    IdleLock& operator=(const IdleLock&) = delete;

    /// The message loop is idle: starts to measure, unless that is under way. A chosen time isn't needed.
    void ArmIdleTimer();

    /// Ends the measuring until the next idle moment.
    void KillIdleTimers();

    /// A key went down or up, or the mouse moved.
    void OnActivity() { KillIdleTimers(); }

    /// A timer of the window fired.
    void OnTimer(quint32 id);

protected:
    // What the window does for it.

    /// Starts a repeating timer of so many milliseconds; gives its id, or 0 if there is none to be had.
    virtual quint32 SetTimer(quint32 id, quint32 milliseconds) = 0;
    virtual void KillTimer(quint32 id) = 0;
    /// The chosen idle time in milliseconds, 0 for none.
    virtual quint32 lockTimeout() const = 0;
    virtual void LockNow() = 0;

private:
    void kill(quint32& timer);

    quint32 m_idle_timer = 0;
    quint32 m_lock_timer = 0;
};

/// Locks the workstation of an NT system from version 5 on, where the session can do that. Nobody learns
/// where it can't, or where the version isn't known.
void LockWorkstationIfSupported();

} // namespace quoril
