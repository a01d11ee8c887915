#include "shell/wheel_guard_widget.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QEvent>
#include <QPointer>
#include <QScrollBar>
#include <QTabBar>

namespace quoril {

namespace {

bool isChangedByWheel(const QWidget& widget)
{
    const bool isSlider = qobject_cast<const QAbstractSlider*>(&widget) != nullptr;
    return qobject_cast<const QComboBox*>(&widget) || qobject_cast<const QAbstractSpinBox*>(&widget)
        || qobject_cast<const QTabBar*>(&widget) || (isSlider && !qobject_cast<const QScrollBar*>(&widget));
}

} // namespace

void WheelGuard::install()
{
    static QPointer<WheelGuard> guard;
    if (guard)
        return;
    guard = new WheelGuard(qApp);
    qApp->installEventFilter(guard);
}

bool WheelGuard::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::Polish && event->type() != QEvent::Wheel)
        return false;
    auto* const widget = qobject_cast<QWidget*>(watched);
    if (!widget)
        return false;
    // The toolkit gives the focus before any filter sees the wheel, so the widget itself has to refuse it.
    if (event->type() == QEvent::Polish) {
        if (widget->focusPolicy() == Qt::WheelFocus)
            widget->setFocusPolicy(Qt::StrongFocus);
        return false;
    }
    if (!isChangedByWheel(*widget) || widget->hasFocus())
        return false;
    event->ignore(); // what lies around it may scroll
    return true;
}

} // namespace quoril
