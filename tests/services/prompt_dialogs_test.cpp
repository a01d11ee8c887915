#include "services/prompt_dialogs.h"

#include "services/inform_dialog.h"
#include "support/fake_machine.h"
#include "support/person.h"

#include <QLineEdit>

namespace quoril::test {

TEST(InformDialog, StandsForItsPeriodAndASecondOfReady)
{
    FakeMachine machine;
    Person person;
    QString lastSecond;
    machine.fakeClock.timerScale = 0.01;
    machine.fakeClock.onSleep
        = [&] { lastSecond = Person::control<QLabel>(*QApplication::activeModalWidget(), 1037).text(); };
    DialogPrompts(nullptr).inform(u"Please <wait>..."_s, 2000);
    EXPECT_EQ(person.seen, QStringList{u"Information: Please <wait>..."_s});
    EXPECT_EQ(machine.fakeClock.timers, std::vector<quint32>{2000});
    EXPECT_EQ(machine.calls.takeLog(), QStringList{u"sleep 1000"_s});
    EXPECT_EQ(lastSecond, u"Ready"_s);
}

TEST(InformDialog, EnterAndEscapeEndItForGood)
{
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape}) {
        FakeMachine machine;
        machine.fakeClock.timerScale = 0.1;
        Person person;
        person.on(u"Information"_s, Person::types(key));
        InformDialog dialog(u"Wait"_s, 500, nullptr);
        dialog.exec();
        QElapsedTimer since;
        since.start();
        EXPECT_TRUE(Person::waitFor([&] { return since.elapsed() > 80; }));
        EXPECT_EQ(machine.calls.takeLog(), QStringList());
        EXPECT_EQ(Person::control<QLabel>(dialog, 1037).text(), u"Wait"_s);
    }
}

TEST(DialogPrompts, ReportAndAskUnderTheApplicationsTitle)
{
    constexpr int ok = 1, cancel = 2, yes = 6, no = 7;
    FakeMachine machine;
    QWidget window;
    DialogPrompts prompts(&window);
    Person person;
    person.on(u"Quoril Services Manager: Report"_s, Person::presses(ok));
    prompts.message(u"Report"_s);
    const std::pair<Person::Action, bool> answers[]
        = {{Person::presses(yes), true}, {Person::presses(no), false}, {Person::types(Qt::Key_Escape), false},
            {Person::types(Qt::Key_Return), false}};
    for (const auto& [action, answer] : answers) {
        person.on(u"Quoril Services Manager: Really?"_s, action);
        EXPECT_EQ(prompts.ask(u"Really?"_s), answer);
    }
    for (const int button : {ok, cancel}) {
        person.on(u"Remove Service Dialog"_s, [button](QWidget& dialog) {
            EXPECT_EQ(Person::control<QLineEdit>(dialog, 1008).text(), u"Quoril1"_s);
            Person::press(dialog, button);
        });
        EXPECT_EQ(prompts.confirmRemoval(u"Quoril1"_s), button == ok);
    }
}

} // namespace quoril::test
