#include "access/idle_lock_frame.h"

#include "platform/clock.h"
#include "platform/machine.h"

#include <QApplication>
#include <QKeyEvent>
#include <QWidget>
#include <QWindow>

namespace quoril {

namespace {

/// While the main thread is held, timers expire and input waits. The event loop may take either of them
/// first, so an expired lock timer leaves the input this time, which is too short to be noticed.
constexpr int GraceMilliseconds = 50;

/// The platform has messages of their own for F10 and for keys that are held with Alt alone.
bool isSystemKey(const QKeyEvent& event)
{
    const Qt::KeyboardModifiers held = event.modifiers();
    return event.key() == Qt::Key_F10 || event.key() == Qt::Key_Alt
        || (held.testFlag(Qt::AltModifier) && !held.testFlag(Qt::ControlModifier));
}

bool isActivity(const QEvent& event)
{
    if (!event.spontaneous())
        return false;
    if (event.type() == QEvent::KeyPress || event.type() == QEvent::KeyRelease)
        return !isSystemKey(static_cast<const QKeyEvent&>(event));
    return event.type() == QEvent::MouseMove;
}

} // namespace

IdleLockFrame::IdleLockFrame(
    QWidget& frame, std::function<quint32()> lockTimeout, std::function<void()> lockNow)
    : m_frame(frame)
    , m_lockTimeout(std::move(lockTimeout))
    , m_lockNow(std::move(lockNow))
{
    for (const quint32 id : {IdleTimerId, LockTimerId})
        timer(id).setTimerType(Qt::PreciseTimer);
    timer(IdleTimerId).callOnTimeout(this, [this] { OnTimer(IdleTimerId); });
    timer(LockTimerId).callOnTimeout(this, [this] { m_grace.start(); });
    m_grace.setSingleShot(true);
    m_grace.setInterval(GraceMilliseconds);
    m_grace.callOnTimeout(this, [this] { OnTimer(LockTimerId); });
    qApp->installEventFilter(this);
    m_watch = watchThreadInput([this] { OnActivity(); });
}

quint32 IdleLockFrame::SetTimer(quint32 id, quint32 milliseconds)
{
    timer(id).start(machine().clock().timerInterval(milliseconds));
    return id;
}

void IdleLockFrame::KillTimer(quint32 id)
{
    timer(id).stop();
    if (id == LockTimerId)
        m_grace.stop();
}

bool IdleLockFrame::eventFilter(QObject* receiver, QEvent* event)
{
    if (isActivity(*event)) {
        if (event->type() == QEvent::KeyPress)
            dispatchEscape(receiver, static_cast<const QKeyEvent&>(*event));
        OnActivity();
    }
    return QObject::eventFilter(receiver, event);
}

void IdleLockFrame::dispatchEscape(QObject* receiver, const QKeyEvent& event)
{
    // Escape reaches the frame's focus at once, ahead of whoever else filters it, and once more on its way. A
    // dialog deals with its Escape before the frame would.
    if (event.key() != Qt::Key_Escape || receiver != m_frame.windowHandle())
        return;
    QWidget* const focus = m_frame.focusWidget();
    QKeyEvent first(QEvent::KeyPress, event.key(), event.modifiers(), event.text(), event.isAutoRepeat());
    QCoreApplication::sendEvent(focus ? focus : &m_frame, &first);
}

} // namespace quoril
