#pragma once

#include "support/person.h"

#include <QKeyEvent>
#include <QProcess>
#include <QWidget>

namespace quoril::test {

/// Moves the mouse and presses keys through the window system. Each call comes back when the program has
/// worked off what it sent.
class Hands : public QObject
{
public:
    Hands() { qApp->installEventFilter(this); }

    /// Gives the keyboard to the window.
    static void take(QWidget& window)
    {
        window.activateWindow();
        ASSERT_TRUE(Person::waitFor([&] { return window.isActiveWindow(); }));
    }
    void pointAt(const QWidget& widget) { pointAt(widget, widget.rect().center()); }
    void pointAt(const QWidget& widget, QPoint place)
    {
        const QPoint onScreen = widget.mapToGlobal(place);
        send({QStringLiteral("mousemove"), QString::number(onScreen.x()), QString::number(onScreen.y())});
    }
    void wheelDown() { send({QStringLiteral("click"), QStringLiteral("5")}); }
    void doubleClick()
    {
        send({QStringLiteral("click"), QStringLiteral("--repeat"), QStringLiteral("2"), QStringLiteral("1")});
    }
    /// Keys by the names of the window system, with blanks between them.
    void key(const QString& names) { send(QStringList(QStringLiteral("key")) + names.split(u' ')); }
    /// A key that opens or closes a window, so that nobody sees what comes after it.
    static void lastKey(const QString& name)
    {
        ASSERT_EQ(QProcess::execute(QStringLiteral("xdotool"), {QStringLiteral("key"), name}), 0);
    }

    bool eventFilter(QObject*, QEvent* event) override
    {
        m_done = m_done
            || (event->type() == QEvent::KeyRelease
                && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Shift);
        return false;
    }

private:
    void send(const QStringList& arguments)
    {
        m_done = false;
        // Input comes in its order: with Shift up, all before it has come.
        ASSERT_EQ(QProcess::execute(QStringLiteral("xdotool"),
                      arguments + QStringList{QStringLiteral("key"), QStringLiteral("Shift_L")}),
            0);
        ASSERT_TRUE(Person::waitFor([this] { return m_done; }));
    }

    bool m_done = false;
};

} // namespace quoril::test
