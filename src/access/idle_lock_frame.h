#pragma once

#include "access/idle_lock.h"
#include "platform/input_watch.h"

#include <QObject>
#include <QTimer>

#include <array>
#include <functional>
#include <memory>

class QKeyEvent;
class QWidget;

namespace quoril {

/// The frame's side of the idle lock: its two window timers, and the filter that sees the input of every
/// window of the program, modal dialogs included, before it is dispatched.
class IdleLockFrame : public QObject, public IdleLock
{
    Q_OBJECT

public:
    /// The frame outlives this. The functions give the chosen idle time in milliseconds and lock.
    IdleLockFrame(QWidget& frame, std::function<quint32()> lockTimeout, std::function<void()> lockNow);

protected:
    /// Activity is a key down, a key up or a mouse move that came from the window system; not the buttons,
    /// not the wheel, no key that is held with Alt.
    bool eventFilter(QObject* receiver, QEvent* event) override;

private:
    quint32 SetTimer(quint32 id, quint32 milliseconds) override;
    void KillTimer(quint32 id) override;
    quint32 lockTimeout() const override { return m_lockTimeout(); }
    void LockNow() override { m_lockNow(); }
    QTimer& timer(quint32 id) { return m_timers[id - 1]; }
    void dispatchEscape(QObject* receiver, const QKeyEvent& event);

    QWidget& m_frame;
    std::function<quint32()> m_lockTimeout;
    std::function<void()> m_lockNow;
    std::array<QTimer, 2> m_timers; ///< by id, from 1 on
    std::unique_ptr<InputWatch> m_watch; ///< of the dialogs that are the system's own
    QTimer m_grace; ///< runs from the lock timer's firing to the lock
};

} // namespace quoril
