#pragma once

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTimer>

#include <gtest/gtest.h>

#include <deque>
#include <functional>

namespace quoril::test {

/// Sits before the windows of a test: sees each modal window once, as it comes up, and does with it what the
/// script has for it. A window that the script has nothing for is looked at only; one that nobody has
/// answered for half a minute is a failure and is closed, so that the test comes to its end.
class Person : public QObject
{
public:
    using Action = std::function<void(QWidget& window)>;

    Person()
    {
        qApp->installEventFilter(this);
        m_patience.setInterval(30'000);
        m_patience.callOnTimeout(this, [] { giveUp(); });
        lookSoon();
    }
    /// All that the script has must have come.
    ~Person() override
    {
        EXPECT_TRUE(m_script.empty()) << "never seen: " << qPrintable(m_script.front().text)
                                      << ", but: " << qPrintable(seen.join(u'\n'));
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        const bool changes = event->type() == QEvent::Show || event->type() == QEvent::Hide;
        if (changes && watched->isWidgetType() && static_cast<QWidget*>(watched)->isModal())
            lookSoon();
        return QObject::eventFilter(watched, event);
    }

    /// Acts on the next window in which the text is seen; the actions are used up in their order.
    Person& on(const QString& text, Action action)
    {
        m_script.push_back({text, std::move(action)});
        return *this;
    }
    Person& closes(const QString& text)
    {
        return on(text, [](QWidget& window) { window.close(); });
    }
    /// The windows in their order, "title: text"; an action may add to it.
    QStringList seen;
    /// How many actions have not come to pass.
    std::size_t left() const { return m_script.size(); }

    /// Presses the button with the control id.
    static void press(const QWidget& window, int id) { control<QPushButton>(window, quint32(id)).click(); }
    static Action presses(int id)
    {
        return [id](QWidget& window) { press(window, id); };
    }
    static Action types(int key)
    {
        return [key](QWidget& window) { type(window, key); };
    }
    /// Presses a key where the window has its focus, and lets it go; nobody takes it for real input.
    static void type(QWidget& window, int key, Qt::KeyboardModifiers held = {}, const QString& text = {})
    {
        const QPointer<QWidget> target = window.focusWidget() ? window.focusWidget() : &window;
        for (const auto kind : {QEvent::KeyPress, QEvent::KeyRelease}) {
            QKeyEvent event(kind, key, held, text);
            if (target)
                QApplication::sendEvent(target, &event);
        }
    }
    /// The control of that id, which must be there.
    template <typename Control> static Control& control(const QWidget& window, quint32 id)
    {
        return *window.findChild<Control*>(QString::number(id));
    }
    /// Lets events run, and idle moments come, until the condition holds; false if it doesn't within twenty
    /// seconds.
    static bool waitFor(const std::function<bool()>& condition)
    {
        QElapsedTimer since;
        for (since.start(); !condition() && since.elapsed() < 20000;) {
            // A loop of its own: only one that may wait has an idle moment.
            QEventLoop loop;
            QTimer::singleShot(5, &loop, &QEventLoop::quit);
            loop.exec();
        }
        return condition();
    }

private:
    static QString textOf(const QWidget& window)
    {
        if (const auto* box = qobject_cast<const QMessageBox*>(&window))
            return box->text();
        const auto* label = window.findChild<QLabel*>(QStringLiteral("1037"));
        return label ? label->text() : QString();
    }

    // Not at once, but when the window is up and events run; no polling, which would leave a busy computer no
    // idle moment.
    void lookSoon()
    {
        QTimer::singleShot(0, this, [this] { look(); });
    }

    void look()
    {
        QWidget* window = QApplication::activeModalWidget();
        if (window != m_standing) {
            m_standing = window;
            m_patience.start();
        }
        if (!window || window->property("seen").toBool())
            return;
        window->setProperty("seen", true);
        seen.append(window->windowTitle() + QStringLiteral(": ") + textOf(*window));
        if (m_script.empty() || !seen.last().contains(m_script.front().text))
            return;
        const Action action = std::move(m_script.front().action);
        m_script.pop_front();
        action(*window);
    }

    static void giveUp()
    {
        QWidget* window = QApplication::activeModalWidget();
        if (!window)
            return;
        ADD_FAILURE() << "nobody answers "
                      << qPrintable(window->windowTitle() + QStringLiteral(": ") + textOf(*window));
        window->close();
    }

    struct Step
    {
        QString text;
        Action action;
    };
    std::deque<Step> m_script;
    QTimer m_patience;
    QPointer<QWidget> m_standing;
};

} // namespace quoril::test
