#include "services/update_or_install_service_dialog.h"

#include "resources/text_ids.h"
#include "services/installer_command_line.h"
#include "support/fake_machine.h"
#include "support/person.h"

#include <QComboBox>
#include <QFile>
#include <QFileDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace quoril::test {

using namespace Qt::StringLiterals;

namespace {

namespace choice = update_or_install_dialog;

void key(QWidget& window, int code, const QString& text = {})
{
    QWidget* target = window.focusWidget() ? window.focusWidget() : &window;
    QKeyEvent press(QEvent::KeyPress, code, Qt::NoModifier, text);
    QApplication::sendEvent(target, &press);
}

void type(QWidget& window, const QString& text)
{
    for (const QChar unit : text)
        key(window, unit.unicode(), QString(unit));
}

template <typename Widget> Widget* control(QWidget& window, quint32 id)
{
    return window.findChild<Widget*>(QString::number(id));
}

/// The choice for the product "Sample" on a machine whose executable succeeds.
struct Bench
{
    FakeMachine machine;
    ScopedMachine inForce{machine};
    Person person;
    CheckedInstaller installer;
    UpdateOrInstallServiceDlg dialog{nullptr};

    Bench()
    {
        machine.fakeProcesses.exitCode = 0xFFFFFFFF;
        dialog.ProductName = u"Sample"_s;
        dialog.CfgFile = u"C:\\a.cfg"_s;
        dialog.ImagePath = u"C:\\x.exe"_s;
        dialog.Installer = &installer;
    }
    QStringList ran() { return machine.calls.takeLog().filter(u"create "_s); }
};

} // namespace

TEST(UpdateOrInstallServiceDlg, InstallsByTheKeyboardAloneAndAsksForAName)
{
    Bench bench;
    bench.person.on(u"Update / Install service dialog"_s, [](QWidget& window) {
        EXPECT_FALSE(control<QPushButton>(window, choice::Cancel)->isVisible());
        // Enter alone leaves; update and install are one and two steps away.
        EXPECT_EQ(window.focusWidget(), control<QPushButton>(window, choice::Return));
        key(window, Qt::Key_Tab);
        EXPECT_EQ(window.focusWidget(), control<QPushButton>(window, choice::Update));
        key(window, Qt::Key_Tab);
        key(window, Qt::Key_Space); // pressed and let go
        QKeyEvent release(QEvent::KeyRelease, Qt::Key_Space, Qt::NoModifier);
        QApplication::sendEvent(window.focusWidget(), &release);
    });
    bench.person.on(u"Service Install Dialog"_s, [](QWidget& window) {
        EXPECT_EQ(control<QLineEdit>(window, install_dialog::Product)->text(), u"Sample"_s);
        EXPECT_FALSE(control<QLineEdit>(window, install_dialog::Configuration)->isEnabled());
        key(window, Qt::Key_Return);
        type(window, u"New Juno"_s);
        key(window, Qt::Key_Return);
    });
    bench.person.on(u"Please, entry the new Service name."_s, Person::presses(1));
    bench.person.on(u"installed successfully"_s, Person::presses(1));
    EXPECT_EQ(bench.dialog.exec(), QDialog::Accepted);
    EXPECT_EQ(bench.person.left(), 0U);
    EXPECT_EQ(bench.ran(), QStringList(u"create |\"C:\\x.exe\" --install \"New Juno\" \"C:\\a.cfg\""_s));
    EXPECT_EQ(bench.dialog.ResultName, u"New Juno"_s);
    EXPECT_FALSE(bench.dialog.IsUpdate);
    EXPECT_EQ(bench.installer.installed(), 1);
}

TEST(UpdateOrInstallServiceDlg, UpdatesTheChosenServiceOfTheProduct)
{
    Bench bench;
    bench.machine.addInstance(u"ZETA"_s);
    bench.machine.addInstance(u"ALPHA"_s);
    bench.person.on(u"Update / Install"_s, Person::presses(choice::Update));
    bench.person.on(u"Service Update Dialog"_s, [](QWidget& window) {
        auto* services = control<QComboBox>(window, update_dialog::Services);
        EXPECT_EQ(services->count(), 2);
        EXPECT_EQ(services->currentText(), u"ZETA"_s);
        type(window, u"x"_s);
        EXPECT_EQ(services->currentText(), u"ZETA"_s);
        key(window, Qt::Key_Down);
        EXPECT_FALSE(control<QPushButton>(window, update_dialog::Update)->isDefault());
        Person::press(window, update_dialog::Update);
    });
    bench.person.on(u"updated successfully"_s, Person::presses(1));
    EXPECT_EQ(bench.dialog.exec(), QDialog::Accepted);
    EXPECT_EQ(bench.person.left(), 0U);
    EXPECT_TRUE(bench.machine.fakeServices.service(u"ALPHA"_s).deleted);
    EXPECT_FALSE(bench.machine.fakeServices.service(u"ZETA"_s).deleted);
    EXPECT_EQ(bench.dialog.ResultName, u"ALPHA"_s);
    EXPECT_TRUE(bench.dialog.IsUpdate);
}

TEST(UpdateOrInstallServiceDlg, LeavingInstallsNothing)
{
    const std::pair<int, QString> roads[]
        = {{choice::Install, u"Service Install"_s}, {choice::Update, u"Service Update"_s}};
    for (const auto& [button, title] : roads) {
        Bench bench;
        bench.person.on(u"Update / Install"_s, Person::presses(button));
        bench.person.on(title, [](QWidget& window) {
            // The product has no service to update.
            const bool isUpdate = control<QComboBox>(window, update_dialog::Services) != nullptr;
            EXPECT_EQ(control<QPushButton>(window, update_dialog::Update)->isEnabled(), !isUpdate);
            key(window, Qt::Key_Return);
            key(window, Qt::Key_Escape);
        });
        if (button == choice::Install)
            bench.person.on(u"Please, entry"_s, Person::presses(1));
        EXPECT_EQ(bench.dialog.exec(), QDialog::Accepted);
        EXPECT_EQ(bench.ran(), QStringList());
        EXPECT_EQ(bench.dialog.ResultName, QString());
        EXPECT_EQ(bench.installer.asked(), 0);
    }
    for (const bool byKey : {false, true}) {
        Bench bench;
        bench.person.on(u"Update / Install"_s, [&](QWidget& window) {
            byKey ? key(window, Qt::Key_Escape) : Person::press(window, choice::Return);
        });
        EXPECT_EQ(bench.dialog.exec(), QDialog::Accepted);
        EXPECT_EQ(bench.person.seen.size(), 1);
    }
}

TEST(UpdateOrInstallServiceDlg, ThePickerTakesFilesOfTheMachineOnly)
{
    Bench bench;
    const QTemporaryDir folder;
    const QString outside = folder.filePath(u"b.cfg"_s);
    ASSERT_TRUE(QFile(outside).open(QIODevice::WriteOnly));
    QWidget* install = nullptr;
    bench.person.on(u"Update / Install"_s, Person::presses(choice::Install));
    bench.person.on(u"Service Install"_s, [&](QWidget& window) {
        install = &window;
        Person::press(window, install_dialog::Browse);
        EXPECT_EQ(control<QLineEdit>(window, install_dialog::Configuration)->text(), u"C:\\a.cfg"_s);
        Person::press(window, install_dialog::Cancel);
    });
    bench.person.on({}, [&](QWidget& window) {
        auto* picker = qobject_cast<QFileDialog*>(&window);
        ASSERT_NE(picker, nullptr);
        EXPECT_EQ(picker->nameFilters(),
            QStringList({u"Quoril Configuration file (*.cfg) (*.cfg)"_s, u"All Files (*.*) (*)"_s}));
        picker->selectFile(outside);
        key(window, Qt::Key_Return);
    });
    bench.person.on(u"lies outside the machine"_s, Person::presses(1));
    bench.dialog.exec();
    EXPECT_EQ(bench.person.left(), 0U) << bench.person.seen.join(u'\n').toStdString();
}

} // namespace quoril::test
