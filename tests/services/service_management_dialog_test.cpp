#include "services/service_management_dialog.h"

#include "support/person.h"
#include "support/service_bench.h"

#include <QComboBox>
#include <QLineEdit>

namespace quoril::test {

namespace {

constexpr int Ok = 1, Cancel = 2, Status = 1017, StartType = 1020, Start = 1021, Stop = 1022, Apply = 1024;
const QString Title = u"Service management dialog: "_s;
const QString QueryFailed = u"Error: SERVICE-MANAGER: Failed to query status of service Quoril1"_s;
const QString StartBox = u"Information: SERVICE-MANAGER: Please wait while service started..."_s;

struct Console : ServiceBench
{
    using ServiceBench::ServiceBench;
    Person person;
    int result = 0;

    /// Runs the dialog with the person acting on it, and gives what was seen.
    QStringList run(Person::Action action)
    {
        person.on(Title, std::move(action));
        QWidget frame;
        frame.setUpdatesEnabled(false);
        ServiceManagementDialog dialog(&frame);
        dialog.SetService(record);
        result = dialog.exec();
        return person.seen;
    }
    static QString status(QWidget& window) { return Person::control<QLabel>(window, Status).text(); }
    void note(QWidget& window)
    {
        QString shown = status(window);
        for (const int id : {Start, Stop, Apply})
            shown += Person::control<QPushButton>(window, quint32(id)).isEnabled() ? u'+' : u'-';
        person.seen.append(shown);
    }
    static void pickNext(QWidget& window)
    {
        Person::control<QComboBox>(window, StartType).setFocus();
        Person::type(window, Qt::Key_Down);
    }
    static void pressEnabled(QWidget& window, int id)
    {
        Person::control<QPushButton>(window, quint32(id)).setEnabled(true);
        Person::press(window, id);
    }
};

Qt::CursorShape cursor()
{
    const QCursor* const shown = QApplication::overrideCursor();
    return shown ? shown->shape() : Qt::ArrowCursor;
}

} // namespace

TEST(ServiceManagementDialog, ShowsTheServiceAsItIs)
{
    const struct
    {
        quint32 state, startType;
        QString status;
        int index;
    } cases[] = {
        {service_state::Stopped, start_type::Automatic, u"Stopped+--"_s, 0},
        {service_state::Running, start_type::Manual, u"Started-+-"_s, 1},
        {service_state::Paused, start_type::Disabled, u"Paused++-"_s, 2},
        {service_state::StartPending, start_type::Boot, u"Unknown status++-"_s, 0},
    };
    for (const auto& [state, startType, status, index] : cases) {
        Console console;
        console.record.ImagePath = u"C:\\Quoril\\emulator.exe"_s;
        console.script.states = {state};
        console.script.config.startType = startType;
        const QStringList seen = console.run([&, index = index](QWidget& window) {
            console.note(window);
            EXPECT_EQ(Person::control<QComboBox>(window, StartType).currentIndex(), index);
            EXPECT_EQ(Person::control<QLineEdit>(window, 1003).text(), u"Quoril1");
            EXPECT_EQ(Person::control<QLineEdit>(window, 1012).text(), console.record.ImagePath);
            Person::press(window, Ok);
        });
        EXPECT_EQ(seen, QStringList({Title, status}));
        EXPECT_EQ(console.result, QDialog::Accepted);
        EXPECT_EQ(console.log(u"changeConfig"_s), QString());
    }
}

TEST(ServiceManagementDialog, TheTimerFollowsTheStateAndAPauseLeavesTheButtons)
{
    Console console;
    console.script.states = {service_state::Running};
    const QStringList seen = console.run([&](QWidget& window) {
        for (const quint32 state :
            {service_state::Paused, service_state::Stopped, service_state::StopPending}) {
            const QString before = Console::status(window);
            console.script.states = {state};
            EXPECT_TRUE(Person::waitFor([&] { return Console::status(window) != before; }));
            console.note(window);
        }
        EXPECT_TRUE(window.parentWidget()->updatesEnabled());
        const auto* timer = window.findChild<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
        EXPECT_TRUE(timer && timer->timerType() == Qt::PreciseTimer);
        Person::press(window, Cancel);
    });
    EXPECT_EQ(seen, QStringList({Title, u"Paused-+-"_s, u"Stopped+--"_s, u"Unknown status++-"_s}));
    EXPECT_EQ(console.fakeClock.timers, std::vector<quint32>{4000});
}

TEST(ServiceManagementDialog, StartAndStopShowTheirBoxesInOrder)
{
    Console console({u"Pre"_s});
    auto& pre = console.fakeServices.service(u"Pre"_s);
    console.fakeClock.onSleep = [] { EXPECT_EQ(cursor(), Qt::WaitCursor); };
    const QStringList seen = console.run([&](QWidget& window) {
        Person::press(window, Start);
        console.note(window);
        console.script.errors[u"start"_s] = error::ServiceAlreadyRunning;
        console.person.on(u"Error"_s, [](QWidget& error) {
            EXPECT_EQ(cursor(), Qt::ArrowCursor) << "it waits for the person";
            Person::press(error, Ok);
        });
        Console::pressEnabled(window, Start);
        Person::press(window, Stop);
        console.note(window);
        console.script.errors[u"control"_s] = error::ServiceNotActive;
        console.person.on(u"Error"_s, Person::presses(Ok));
        Console::pressEnabled(window, Stop);
        pre.states = pre.afterStart = {service_state::StartPending};
        console.log();
        console.person.on(u"Error"_s, Person::presses(Ok));
        Person::press(window, Start);
        EXPECT_EQ(console.log(u"start Quoril1"_s), QString()) << "its prerequisite stays down";
        Person::press(window, Cancel);
    });
    const QString preBox = u"Information: SERVICE-MANAGER: Wait until pre-requisite service started"_s;
    const QString stopBox = u"Information: Please wait while service stopped..."_s;
    EXPECT_EQ(seen,
        QStringList({Title, preBox, StartBox, u"Started-+-"_s, StartBox,
            u"Error: Failed to start the service \"Quoril1\""_s, stopBox, u"Stopped+--"_s, stopBox,
            u"Error: Failed to stop the service \"Quoril1\""_s, preBox,
            u"Error: SERVICE-MANAGER: Failed to start pre-requisite service"_s}));
    EXPECT_EQ(console.fakeClock.timers, (std::vector<quint32>{4000, 2000, 7000, 7000, 3000, 3000, 2000}));
}

TEST(ServiceManagementDialog, AChosenStartTypeIsAppliedByApplyAndOkAndDroppedByCancel)
{
    const QString failure = u"Error: SERVICE-MANAGER: Failed to reconfigurate service Quoril1"_s;
    const struct
    {
        std::vector<int> buttons;
        quint32 startType;
        std::vector<quint32> timers;
        QString seen = {};
        std::map<QString, quint32> errors = {};
    } cases[] = {
        {{Cancel}, start_type::Manual, {4000}},
        {{Ok}, start_type::Disabled, {4000, 5000}},
        {{Apply, Ok}, start_type::Disabled, {4000, 5000}},
        {{Ok}, start_type::Manual, {4000}, failure, {{u"changeConfig"_s, error::ServiceMarkedForDelete}}},
    };
    for (const auto& [buttons, startType, timers, seen, errors] : cases) {
        Console console;
        console.script.errors = errors;
        console.run([&, &pressed = buttons, &error = seen](QWidget& window) {
            Console::pickNext(window);
            console.note(window);
            if (!error.isEmpty())
                console.person.on(error, Person::presses(Ok));
            for (const int id : pressed)
                Person::press(window, id);
        });
        EXPECT_EQ(console.person.seen.value(1), u"Stopped+-+");
        EXPECT_EQ(console.script.config.startType, startType);
        EXPECT_EQ(console.fakeClock.timers, timers);
        EXPECT_EQ(console.result, int(buttons.back() == Ok));
    }
}

TEST(ServiceManagementDialog, ALastingFailureShowsOneBoxAtATimeAndRefreshesUnderIt)
{
    Console console;
    console.script.errors[u"queryStatus"_s] = error::AccessDenied;
    console.person.on(QueryFailed, Person::presses(Ok));
    const QStringList seen = console.run([&](QWidget& window) {
        console.person.on(QueryFailed, [&](QWidget& error) {
            console.log();
            EXPECT_TRUE(Person::waitFor([&, ticks = 0LL]() mutable {
                return (ticks += console.calls.takeLog(u"queryStatus"_s).size()) >= 3;
            }));
            EXPECT_EQ(QApplication::activeModalWidget(), &error);
            console.script.errors.clear();
            console.script.states = {service_state::Running};
            EXPECT_TRUE(Person::waitFor([&] { return Console::status(window) == u"Started"; }));
            Person::press(error, Ok);
        });
        EXPECT_TRUE(Person::waitFor([&] { return console.person.left() == 0; }));
        console.note(window);
        Person::press(window, Cancel);
    });
    EXPECT_EQ(seen, QStringList({QueryFailed, Title, QueryFailed, u"Started-+-"_s}));
}

TEST(ServiceManagementDialog, AFailureShownOverAWaitHoldsTheStartUntilItIsSeen)
{
    Console console;
    const QStringList seen = console.run([&](QWidget& window) {
        console.script.errors[u"queryStatus"_s] = error::AccessDenied;
        console.person.on(QueryFailed, [&](QWidget& error) {
            EXPECT_TRUE(Person::waitFor([&, log = QStringList()]() mutable {
                return (log += console.calls.takeLog()).contains(u"sleep 1000"_s);
            }));
            console.script.errors.clear();
            Person::press(error, Ok);
        });
        Person::press(window, Start);
        console.note(window);
        Person::press(window, Cancel);
    });
    EXPECT_EQ(seen, QStringList({Title, StartBox, QueryFailed, u"Started-+-"_s}));
}

} // namespace quoril::test
