#include "access/idle_lock_frame.h"

#include "resources/text_ids.h"
#include "support/console_test.h"

#include <QAbstractEventDispatcher>
#include <QComboBox>
#include <QWindow>

#include <chrono>
#include <thread>

// The ways in of the window system that the toolkit keeps for its own tests: the events come as real input.
Q_GUI_EXPORT void qt_handleKeyEvent(QWindow* window, QEvent::Type type, int key, Qt::KeyboardModifiers held,
    const QString& text, bool repeated, ushort count);
Q_GUI_EXPORT void qt_handleMouseEvent(QWindow* window, const QPointF& local, const QPointF& global,
    Qt::MouseButtons buttons, Qt::MouseButton button, QEvent::Type type, Qt::KeyboardModifiers held,
    int timestamp);

/// The toolkit has no way in for the wheel, but lets this class make an event a real one.
class QSpontaneKeyEvent
{
public:
    static void mark(QEvent& event) { event.setSpontaneous(); }
};

namespace quoril::test {

namespace {

void key(QWidget& window, int code, Qt::KeyboardModifiers held = Qt::NoModifier)
{
    for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease})
        qt_handleKeyEvent(window.windowHandle(), type, code, held, {}, false, 1);
}

/// Moves the mouse to a place near the window's corner, another one each time.
QPointF mouseMove(QWidget& window)
{
    static int moved = 0;
    const QPointF place(3 + ++moved % 5, 3);
    qt_handleMouseEvent(window.windowHandle(), place, window.mapToGlobal(place), Qt::NoButton, Qt::NoButton,
        QEvent::MouseMove, Qt::NoModifier, 0);
    return place;
}

void click(QWidget& window, const QPointF& place, Qt::MouseButton button = Qt::LeftButton)
{
    for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease})
        qt_handleMouseEvent(window.windowHandle(), place, window.mapToGlobal(place),
            type == QEvent::MouseButtonPress ? button : Qt::NoButton, button, type, Qt::NoModifier, 0);
    QCoreApplication::processEvents();
}

void wheel(QWidget& window)
{
    const QPointF place(3, 3);
    QWheelEvent turn(place, place, {}, {0, 120}, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QSpontaneKeyEvent::mark(turn);
    qApp->notify(window.windowHandle(), &turn); // sendEvent takes the mark away
}

class IdleLockFrameTest : public ConsoleTest
{
protected:
    void SetUp() override
    {
        m_machine.fakeSystemInfo.systemVersion.major = 6;
        m_machine.fakeClock.timerScale = 1e3; // nothing fires by itself
        ConsoleTest::SetUp();
        QApplication::setActiveWindow(&frame());
        settle();
    }
    static void settle()
    {
        // A loop of its own: only one that may wait has an idle moment. On a busy computer the moment comes
        // late.
        QEventLoop loop;
        QTimer::singleShot(10, &loop, &QEventLoop::quit);
        loop.exec();
        QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, &loop,
            &QEventLoop::quit);
        QTimer::singleShot(20'000, &loop, &QEventLoop::quit);
        loop.exec();
    }
    /// Whether the input ended the measuring, so that the next idle moment began it anew.
    bool isActivity(const std::function<void()>& input)
    {
        settle();
        m_machine.fakeClock.timers.clear();
        input();
        settle();
        return !m_machine.fakeClock.timers.empty();
    }
    void checkInput(QWidget& window)
    {
        EXPECT_TRUE(isActivity([&] { key(window, Qt::Key_Shift); }));
        QPointF place;
        EXPECT_TRUE(isActivity([&] { place = mouseMove(window); }));
        EXPECT_FALSE(isActivity([&] { click(window, place, Qt::MiddleButton); })) << "button";
        EXPECT_FALSE(isActivity([&] { wheel(window); })) << "wheel";
        for (const auto& [code, held] : {std::pair(Qt::Key_Z, Qt::AltModifier), {Qt::Key_F10, Qt::NoModifier},
                 {Qt::Key_Alt, Qt::NoModifier}, {Qt::Key_Alt, Qt::AltModifier}})
            EXPECT_FALSE(isActivity([&, code = code, held = held] { key(window, code, held); })) << code;
        EXPECT_FALSE(isActivity([&] { Person::type(window, Qt::Key_Shift); })) << "made by a program";
    }
    /// Chooses an idle time by its place in the list and presses OK or Cancel.
    void choose(int shown, int choice, int button)
    {
        Person person;
        person.on(u"Security dialog"_s, [=, this](QWidget& window) {
            checkInput(window);
            auto& list = Person::control<QComboBox>(window, 1034);
            EXPECT_EQ(list.currentIndex(), shown);
            EXPECT_EQ(list.itemText(8), u"2  hours");
            list.setCurrentIndex(choice);
            m_machine.fakeClock.timers.clear();
            Person::press(window, button);
        });
        action(command::Security).trigger();
        settle();
        EXPECT_EQ(m_machine.fakeClock.timers.empty(), button == 2) << "a new choice starts a new count";
    }
};

} // namespace

TEST_F(IdleLockFrameTest, CountsKeysAndMovesInEveryWindow)
{
    checkInput(frame());
    choose(0, 3, 1);
    EXPECT_EQ(frame().document().m_lock_timeout, 60'000U);
    choose(3, 12, 2);
    choose(3, 12, 1);
    EXPECT_EQ(frame().document().m_lock_timeout, 86'400'000U);
    choose(12, 0, 1);
    EXPECT_EQ(frame().document().m_lock_timeout, 0U);

    struct Watch : QObject
    {
        bool eventFilter(QObject*, QEvent* event) override
        {
            presses += event->type() == QEvent::KeyPress;
            return false;
        }
        int presses = 0;
    } watch;
    tree().setFocus();
    tree().installEventFilter(&watch);
    key(frame(), Qt::Key_Escape); // at once, and on its way
    EXPECT_EQ(watch.presses, 2);
    key(frame(), Qt::Key_Shift);
    EXPECT_EQ(watch.presses, 3);
}

TEST_F(IdleLockFrameTest, LocksUnderADialogAndOrdersFireInReadOnlyMode)
{
    tree().setCurrentItem(service(0));
    const QString caption = frame().windowTitle();
    m_machine.fakeClock.timerScale = 0.01; // ten seconds are a hundred milliseconds
    frame().document().m_lock_timeout = 10'000;
    frame().KillIdleTimers();
    m_machine.calls.takeLog();
    Person person;
    person.on(u"Schedule dialog"_s, [&](QWidget& window) {
        EXPECT_EQ(window.focusWidget()->objectName(), u"1040");
        qsizetype locks = 0;
        EXPECT_TRUE(
            Person::waitFor([&] { return (locks += m_machine.calls.takeLog(u"^lock w"_s).size()) >= 2; }));
        // Under the dialog nothing can be operated.
        const QRect other = tree().visualItemRect(service(1));
        click(frame(), tree().viewport()->mapTo(&frame(), other.center()));
        key(frame(), Qt::Key_Down);
        EXPECT_TRUE(service(0)->isSelected());
        Person::press(window, 2);
    });
    action(command::Schedule).trigger();
    EXPECT_TRUE(frame().m_read_only);
    frame().document().m_lock_timeout = 0;

    click(frame(), tree().viewport()->mapTo(&frame(), tree().visualItemRect(service(1)).center()));
    EXPECT_EQ(frame().windowTitle(), caption);
    EXPECT_EQ(tree().GetSelectedService().Name, u"Beta");

    // Without a worker nothing fires; the first dialog that ends with OK starts it.
    for (const int button : {2, 1}) {
        person.on(u"Schedule dialog"_s, [button](QWidget& window) {
            EXPECT_EQ(window.focusWidget()->objectName(), u"1022");
            Person::press(window, 1022);
            Person::press(window, button);
        });
        m_machine.fakeClock.advance(120'000);
        frame().OnScheduleStop();
        settle();
        if (button == 2) {
            EXPECT_EQ(frame().SchedTable.orders().size(), 1U);
        }
    }
    m_machine.fakeClock.advance(120'000);
    EXPECT_TRUE(Person::waitFor([&] { return frame().SchedTable.orders().empty(); }));
    EXPECT_TRUE(frame().close());
    frame().SchedTable.add({tree().GetSelectedService(), 0, schedule_action::Stop});
    QTimer::singleShot(300, qApp, [] { QCoreApplication::exit(); });
    QCoreApplication::exec();
    EXPECT_EQ(frame().SchedTable.orders().size(), 1U) << "the worker goes on";
    EXPECT_EQ(m_machine.calls.takeLog(u"^control"_s), QStringList(2, u"control Beta 1"_s));
}

TEST_F(IdleLockFrameTest, InputThatWaitsCountsBeforeTheLockTimerThatExpired)
{
    m_machine.fakeClock.timerScale = 0.05; // the chosen time is half a second
    frame().document().m_lock_timeout = 10'000;
    m_machine.fakeClock.timers.clear();
    frame().KillIdleTimers();
    ASSERT_TRUE(Person::waitFor([&] { return m_machine.fakeClock.timers.size() == 2; }));
    frame().document().m_lock_timeout = 0; // no other lock after this one
    mouseMove(frame());
    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    settle();
    EXPECT_FALSE(frame().m_read_only);
}

} // namespace quoril::test
