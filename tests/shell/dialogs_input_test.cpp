// What the wheel and Enter do in the dialogs, with input of the window system.

#include "schedule/schedule_dialog.h"
#include "services/service_app.h"
#include "services/service_management_dialog.h"
#include "services/service_update_dialog.h"
#include "shell/wheel_guard_widget.h"
#include "support/fake_machine.h"
#include "support/hands.h"

#include <QAbstractSpinBox>
#include <QComboBox>
#include <QTreeView>

namespace quoril::test {
namespace {

struct Desk
{
    Desk()
    {
        machine.addInstance(u"CERES"_s);
        machine.addInstance(u"JUNO"_s);
        record.Name = u"CERES"_s;
        machine.fakeClock.timerScale = 0.01;
        WheelGuard::install();
    }
    FakeMachine machine;
    ServiceInfo record;
    Person person;
    Hands hands;
};

QString contents(const QWidget& dialog)
{
    QStringList all;
    for (const auto* list : dialog.findChildren<QComboBox*>())
        all.append(list->currentText());
    for (const auto* picker : dialog.findChildren<QAbstractSpinBox*>())
        all.append(picker->text());
    return all.join(u'|');
}

TEST(DialogsInput, TheWheelChangesNothingOnItsWay)
{
    Desk desk;
    ServiceApp installer;
    ServiceManagementDialog manage(nullptr);
    manage.SetService(desk.record);
    ServiceUpdateDialog update(u"Sample"_s, u"C:\\a.cfg"_s, nullptr);
    update.Installer = &installer;
    ScheduleTable orders;
    ScheduleDialog schedule(
        orders, [] { return nullptr; }, desk.machine.fakeClock.now());
    QDialog* const dialogs[] = {&manage, &update, &schedule};
    for (QDialog* const dialog : dialogs) {
        desk.person.on(dialog->windowTitle(), [&](QWidget& window) {
            Hands::take(window);
            QWidgetList passed;
            for (auto* const list : window.findChildren<QComboBox*>())
                passed.append(list);
            for (auto* const picker : window.findChildren<QAbstractSpinBox*>())
                passed.append(picker);
            EXPECT_FALSE(passed.empty());
            for (QWidget* const widget : passed) {
                const QString before = contents(window);
                auto* const elsewhere = window.findChild<QPushButton*>(u"2"_s);
                elsewhere->setFocus();
                desk.hands.pointAt(*widget);
                desk.hands.wheelDown();
                EXPECT_EQ(contents(window), before);
                EXPECT_EQ(window.focusWidget(), elsewhere);
                widget->setFocus();
                desk.hands.wheelDown();
                const auto* const list = qobject_cast<QComboBox*>(widget);
                const bool atItsEnd = list && list->currentIndex() == list->count() - 1 && list->count() < 2;
                EXPECT_NE(contents(window) == before, !atItsEnd) << "with the focus it takes the wheel";
            }
            static_cast<QDialog&>(window).reject();
        });
        dialog->exec();
    }
}

TEST(DialogsInput, EnterIsOkAfterAButtonWasDisabledUnderTheFocus)
{
    Desk desk;
    auto& script = desk.machine.fakeServices.service(u"CERES"_s);
    const struct
    {
        quint32 state;
        QStringList keys; ///< to the button that is disabled after Space
    } cases[] = {
        // From the name over description and path; Apply comes after the list.
        {service_state::Running, {u"Tab Tab Tab Down Tab"_s}},
        {service_state::Stopped, {u"Tab Tab Tab Tab"_s}},
        {service_state::Stopped, {u"Tab Tab Tab Tab"_s, u"Tab Tab Tab Tab Tab Tab"_s}},
    };
    for (const auto& [state, keys] : cases) {
        script.states = {state};
        ServiceManagementDialog manage(nullptr);
        manage.SetService(desk.record);
        desk.person.on(u"Service management"_s, [&, &keys = keys](QWidget& window) {
            Hands::take(window);
            for (const QString& typed : keys) {
                desk.hands.key(typed);
                const QPointer<QWidget> pressed = window.focusWidget();
                Hands::lastKey(u"space"_s);
                EXPECT_TRUE(Person::waitFor(
                    [&] { return !pressed->isEnabled() && QApplication::activeModalWidget() == &window; }));
                Hands::take(window);
                EXPECT_EQ(window.focusWidget()->objectName(), u"1"_s) << typed;
            }
            desk.machine.calls.takeLog();
            Hands::lastKey(u"Return"_s);
        });
        EXPECT_EQ(manage.exec(), QDialog::Accepted);
        EXPECT_TRUE(desk.machine.calls.takeLog().filter(u"control"_s).isEmpty());
    }
}

TEST(DialogsInput, TheFirstDownGoesToTheFirstOrder)
{
    Desk desk;
    ScheduleTable orders;
    for (const qint64 moment : {1, 2, 3})
        orders.add({desk.record, desk.machine.fakeClock.now() + moment, schedule_action::Start});
    ScheduleDialog schedule(
        orders, [] { return nullptr; }, desk.machine.fakeClock.now());
    desk.person.on(u"Schedule"_s, [&](QWidget& window) {
        Hands::take(window);
        auto& list = *window.findChild<QTreeView*>(u"1048"_s);
        while (window.focusWidget() != &list)
            desk.hands.key(u"Tab"_s);
        for (const int row : {0, 1}) {
            desk.hands.key(u"Down"_s);
            EXPECT_EQ(list.currentIndex().row(), row);
            EXPECT_TRUE(list.selectionModel()->isRowSelected(row));
        }
        Hands::lastKey(u"Escape"_s);
    });
    EXPECT_EQ(schedule.exec(), QDialog::Rejected);
}

} // namespace
} // namespace quoril::test
