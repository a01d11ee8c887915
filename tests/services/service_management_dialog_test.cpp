#include "services/service_management_dialog.h"

#include "services/service_info.h"
#include "support/fake_machine.h"
#include "support/person.h"

#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>

namespace quoril::test {

using testing::HasSubstr;

namespace {

constexpr int Ok = 1, Cancel = 2, Status = 1017, StartType = 1020, Start = 1021, Stop = 1022, Apply = 1024;
const QString Title = u"Service management dialog: "_s;

struct Console
{
    FakeMachine machine;
    ServiceInfo record;
    FakeServiceControl::Script& script;
    Person person;
    int result = 0;

    explicit Console(const QStringList& prerequisites = {})
        : script(machine.addInstance(u"Quoril1"_s, prerequisites))
    {
        record.Name = u"Quoril1"_s;
        record.ImagePath = u"C:\\Quoril\\emulator.exe"_s;
        // Four seconds are forty milliseconds.
        machine.fakeClock.timerScale = 0.01;
    }
    /// Runs the dialog with the person acting on it, and gives what was seen.
    std::string run(Person::Action action)
    {
        person.on(Title, std::move(action));
        QWidget frame;
        frame.setUpdatesEnabled(false);
        ServiceManagementDialog dialog(&frame);
        dialog.SetService(record);
        result = dialog.exec();
        EXPECT_EQ(person.left(), 0U);
        EXPECT_EQ(machine.calls.open(), 0);
        return person.seen.join(u'\n').toStdString();
    }
    void note(QWidget& window)
    {
        const auto enabled = [&](int id) {
            return window.findChild<QPushButton*>(QString::number(id))->isEnabled() ? u'+' : u'-';
        };
        person.seen.append(window.findChild<QLabel*>(QString::number(Status))->text() + enabled(Start)
            + enabled(Stop) + enabled(Apply));
    }
    static void pick(QWidget& window, Qt::Key key)
    {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
        QApplication::sendEvent(window.findChild<QComboBox*>(QString::number(StartType)), &press);
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
        const char* status;
        int index;
    } cases[] = {
        {service_state::Stopped, start_type::Automatic, "Stopped+--", 0},
        {service_state::Running, start_type::Manual, "Started-+-", 1},
        {service_state::Paused, start_type::Disabled, "Paused++-", 2},
        {service_state::StartPending, start_type::Boot, "Unknown status++-", 0},
    };
    for (const auto& [state, startType, status, index] : cases) {
        Console console;
        console.script.states = {state};
        console.script.config.startType = startType;
        const std::string seen = console.run([&, index = index](QWidget& window) {
            console.note(window);
            EXPECT_EQ(window.findChild<QComboBox*>(QString::number(StartType))->currentIndex(), index);
            EXPECT_EQ(window.findChild<QLineEdit*>(u"1003"_s)->text(), u"Quoril1"_s);
            EXPECT_EQ(window.findChild<QLineEdit*>(u"1012"_s)->text(), console.record.ImagePath);
            Person::press(window, Ok);
        });
        EXPECT_EQ(seen, Title.toStdString() + '\n' + status);
        EXPECT_EQ(console.result, QDialog::Accepted);
        EXPECT_THAT(console.machine.calls.takeLog().join(u' ').toStdString(), Not(HasSubstr("changeConfig")));
    }
}

TEST(ServiceManagementDialog, TheTimerFollowsTheStateAndAPauseLeavesTheButtons)
{
    Console console;
    console.script.states = {service_state::Running};
    const std::string seen = console.run([&](QWidget& window) {
        auto* status = window.findChild<QLabel*>(QString::number(Status));
        for (const quint32 state :
            {service_state::Paused, service_state::Stopped, service_state::StopPending}) {
            const QString before = status->text();
            console.script.states = {state};
            EXPECT_TRUE(Person::waitFor([&] { return status->text() != before; }));
            console.note(window);
        }
        EXPECT_TRUE(window.parentWidget()->updatesEnabled());
        const auto* timer = window.findChild<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
        EXPECT_TRUE(timer && timer->timerType() == Qt::PreciseTimer);
        Person::press(window, Cancel);
    });
    EXPECT_EQ(seen, Title.toStdString() + "\nPaused-+-\nStopped+--\nUnknown status++-");
    EXPECT_EQ(console.machine.fakeClock.timers, std::vector<quint32>{4000});
}

TEST(ServiceManagementDialog, StartAndStopShowTheirBoxesInOrder)
{
    Console console({u"Pre"_s});
    console.machine.fakeServices.service(u"Pre"_s);
    console.machine.fakeClock.onSleep = [] { EXPECT_EQ(cursor(), Qt::WaitCursor); };
    const std::string seen = console.run([&](QWidget& window) {
        Person::press(window, Start);
        console.note(window);
        console.script.errors[u"start"_s] = error::ServiceAlreadyRunning;
        console.person.on(u"Error"_s, [](QWidget& error) {
            EXPECT_EQ(cursor(), Qt::ArrowCursor) << "it waits for the person";
            Person::press(error, Ok);
        });
        window.findChild<QPushButton*>(QString::number(Start))->setEnabled(true);
        Person::press(window, Start);
        Person::press(window, Stop);
        console.note(window);
        console.script.errors[u"control"_s] = error::ServiceNotActive;
        console.person.on(u"Error"_s, Person::presses(Ok));
        window.findChild<QPushButton*>(QString::number(Stop))->setEnabled(true);
        Person::press(window, Stop);
        Person::press(window, Cancel);
    });
    EXPECT_EQ(seen,
        Title.toStdString()
            + "\nInformation: SERVICE-MANAGER: Wait until pre-requisite service started"
              "\nInformation: SERVICE-MANAGER: Please wait while service started..."
              "\nStarted-+-"
              "\nInformation: SERVICE-MANAGER: Please wait while service started..."
              "\nError: Failed to start the service \"Quoril1\""
              "\nInformation: Please wait while service stopped..."
              "\nStopped+--"
              "\nInformation: Please wait while service stopped..."
              "\nError: Failed to stop the service \"Quoril1\"");
    const auto& timers = console.machine.fakeClock.timers;
    EXPECT_EQ(timers, (std::vector<quint32>{4000, 2000, 7000, 7000, 3000, 3000}));
}

TEST(ServiceManagementDialog, APrerequisiteThatStaysDownEndsTheStart)
{
    Console console({u"Pre"_s});
    console.machine.fakeServices.service(u"Pre"_s).afterStart = {service_state::StartPending};
    console.person.on(Title, [&](QWidget& window) {
        console.person.on(
            u"Error: SERVICE-MANAGER: Failed to start pre-requisite service"_s, Person::presses(Ok));
        Person::press(window, Start);
        Person::press(window, Cancel);
    });
    QWidget frame;
    ServiceManagementDialog dialog(&frame);
    dialog.SetService(console.record);
    EXPECT_EQ(dialog.exec(), QDialog::Rejected);
    EXPECT_EQ(console.person.seen.size(), 3);
    EXPECT_THAT(console.machine.calls.takeLog().join(u' ').toStdString(), Not(HasSubstr("start Quoril1")));
}

TEST(ServiceManagementDialog, AChosenStartTypeIsAppliedByApplyAndOkAndDroppedByCancel)
{
    const struct
    {
        std::vector<int> buttons;
        quint32 startType;
        std::vector<quint32> timers;
    } cases[] = {
        {{Cancel}, start_type::Manual, {4000}},
        {{Ok}, start_type::Disabled, {4000, 5000}},
        {{Apply, Ok}, start_type::Disabled, {4000, 5000}},
    };
    for (const auto& [buttons, startType, timers] : cases) {
        Console console;
        console.run([&, &pressed = buttons](QWidget& window) {
            Console::pick(window, Qt::Key_Down);
            console.note(window);
            for (const int id : pressed)
                Person::press(window, id);
        });
        EXPECT_EQ(console.person.seen.value(1), u"Stopped+-+"_s);
        EXPECT_EQ(console.script.config.startType, startType);
        EXPECT_EQ(console.machine.fakeClock.timers, timers);
    }
    Console console;
    console.script.errors[u"changeConfig"_s] = error::ServiceMarkedForDelete;
    console.run([&](QWidget& window) {
        console.person.on(
            u"Error: SERVICE-MANAGER: Failed to reconfigurate service Quoril1"_s, Person::presses(Ok));
        Console::pick(window, Qt::Key_Down);
        Person::press(window, Ok);
    });
    EXPECT_EQ(console.result, QDialog::Accepted);
}

TEST(ServiceManagementDialog, ALastingFailureShowsOneBoxAtATimeAndRefreshesBehindIt)
{
    Console console;
    const QString box = u"Error: SERVICE-MANAGER: Failed to query status of service Quoril1"_s;
    int ticksBehind = 0;
    console.script.errors[u"queryStatus"_s] = error::AccessDenied;
    console.person.on(box, Person::presses(Ok));
    const std::string seen = console.run([&](QWidget& window) {
        console.person.on(box, [&](QWidget& error) {
            console.machine.calls.takeLog();
            const auto queries = [&, log = QStringList()]() mutable {
                log += console.machine.calls.takeLog().filter(u"queryStatus"_s);
                ticksBehind = int(log.size());
                return ticksBehind >= 3;
            };
            EXPECT_TRUE(Person::waitFor(queries));
            EXPECT_EQ(QApplication::activeModalWidget(), &error);
            console.script.errors.clear();
            console.script.states = {service_state::Running};
            auto* status = window.findChild<QLabel*>(QString::number(Status));
            EXPECT_TRUE(Person::waitFor([&] { return status->text() == u"Started"_s; }));
            Person::press(error, Ok);
        });
        EXPECT_TRUE(Person::waitFor([&] { return console.person.left() == 0; }));
        console.note(window);
        Person::press(window, Cancel);
    });
    EXPECT_EQ(seen, (box + u'\n' + Title + u'\n' + box + u"\nStarted-+-"_s).toStdString());
}

TEST(ServiceManagementDialog, AFailureShownOverAWaitHoldsTheStartUntilItIsSeen)
{
    Console console;
    const QString box = u"Error: SERVICE-MANAGER: Failed to query status of service Quoril1"_s;
    QStringList log;
    const std::string seen = console.run([&](QWidget& window) {
        console.script.errors[u"queryStatus"_s] = error::AccessDenied;
        console.person.on(box, [&](QWidget& error) {
            EXPECT_TRUE(Person::waitFor([&] {
                log += console.machine.calls.takeLog();
                return log.contains(u"sleep 1000"_s);
            }));
            console.script.errors.clear();
            Person::press(error, Ok);
        });
        Person::press(window, Start);
        console.note(window);
        Person::press(window, Cancel);
    });
    EXPECT_EQ(seen,
        (Title + u"\nInformation: SERVICE-MANAGER: Please wait while service started...\n"_s + box
            + u"\nStarted-+-"_s)
            .toStdString());
}

} // namespace quoril::test
