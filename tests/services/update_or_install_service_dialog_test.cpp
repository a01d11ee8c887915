#include "services/update_or_install_service_dialog.h"

#include "resources/text_ids.h"
#include "services/installer_command_line.h"
#include "support/fake_machine.h"
#include "support/person.h"

#include <QComboBox>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QTemporaryDir>

namespace quoril::test {

namespace {

namespace choice = update_or_install_dialog;

/// The choice for the product "Sample" on a machine whose executable succeeds.
struct Bench
{
    FakeMachine machine;
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
    QStringList ran() { return machine.calls.takeLog(u"^create "_s); }
};

} // namespace

TEST(UpdateOrInstallServiceDlg, InstallsByTheKeyboardAloneAndAsksForAName)
{
    Bench bench;
    bench.person.on(u"Update / Install service dialog"_s, [](QWidget& window) {
        EXPECT_FALSE(Person::control<QPushButton>(window, choice::Cancel).isVisible());
        // Enter alone leaves; update and install are one and two steps away.
        EXPECT_EQ(window.focusWidget(), &Person::control<QPushButton>(window, choice::Return));
        Person::type(window, Qt::Key_Tab);
        EXPECT_EQ(window.focusWidget(), &Person::control<QPushButton>(window, choice::Update));
        Person::type(window, Qt::Key_Tab);
        Person::type(window, Qt::Key_Space);
    });
    bench.person.on(u"Service Install Dialog"_s, [](QWidget& window) {
        EXPECT_EQ(Person::control<QLineEdit>(window, install_dialog::Product).text(), u"Sample"_s);
        EXPECT_FALSE(Person::control<QLineEdit>(window, install_dialog::Configuration).isEnabled());
        Person::type(window, Qt::Key_Return);
        Person::type(window, Qt::Key_N, {}, u"New Juno"_s);
        Person::type(window, Qt::Key_Return);
    });
    bench.person.closes(u"Please, entry the new Service name."_s);
    bench.person.closes(u"installed successfully"_s);
    EXPECT_EQ(bench.dialog.exec(), QDialog::Accepted);
    EXPECT_EQ(bench.ran(), QStringList(u"create |\"C:\\x.exe\" --install \"New Juno\" \"C:\\a.cfg\""_s));
    EXPECT_EQ(bench.dialog.ResultName, u"New Juno"_s);
    EXPECT_FALSE(bench.dialog.IsUpdate);
    EXPECT_EQ(bench.dialog.Outcome->step, InstallStep::Done);
}

TEST(UpdateOrInstallServiceDlg, UpdatesTheChosenServiceOfTheProduct)
{
    Bench bench;
    bench.machine.addInstance(u"ZETA"_s);
    bench.machine.addInstance(u"ALPHA"_s);
    bench.person.on(u"Update / Install"_s, Person::presses(choice::Update));
    bench.person.on(u"Service Update Dialog"_s, [](QWidget& window) {
        auto& services = Person::control<QComboBox>(window, update_dialog::Services);
        EXPECT_EQ(services.count(), 2);
        EXPECT_EQ(services.currentText(), u"ZETA"_s);
        Person::type(window, Qt::Key_X, {}, u"x"_s);
        EXPECT_EQ(services.currentText(), u"ZETA"_s);
        Person::type(window, Qt::Key_Down);
        EXPECT_FALSE(Person::control<QPushButton>(window, update_dialog::Update).isDefault());
        Person::press(window, update_dialog::Update);
    });
    bench.person.closes(u"updated successfully"_s);
    EXPECT_EQ(bench.dialog.exec(), QDialog::Accepted);
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
            const bool isUpdate = window.findChild<QComboBox*>() != nullptr;
            EXPECT_EQ(Person::control<QPushButton>(window, update_dialog::Update).isEnabled(), !isUpdate);
            Person::type(window, Qt::Key_Return);
            Person::type(window, Qt::Key_Escape);
        });
        if (button == choice::Install)
            bench.person.closes(u"Please, entry"_s);
        EXPECT_EQ(bench.dialog.exec(), QDialog::Accepted);
        EXPECT_EQ(bench.ran(), QStringList());
        EXPECT_EQ(bench.dialog.ResultName, QString());
        EXPECT_FALSE(bench.dialog.Outcome);
    }
    for (const auto& leave : {Person::types(Qt::Key_Escape), Person::presses(choice::Return)}) {
        Bench bench;
        bench.person.on(u"Update / Install"_s, leave);
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
    bench.person.on(u"Update / Install"_s, Person::presses(choice::Install));
    bench.person.on(u"Service Install"_s, [](QWidget& window) {
        Person::press(window, install_dialog::Browse);
        EXPECT_EQ(Person::control<QLineEdit>(window, install_dialog::Configuration).text(), u"C:\\a.cfg"_s);
        Person::press(window, install_dialog::Cancel);
    });
    bench.person.on({}, [&](QWidget& window) {
        auto* picker = qobject_cast<QFileDialog*>(&window);
        ASSERT_NE(picker, nullptr);
        EXPECT_EQ(picker->nameFilters(),
            QStringList({u"Quoril Configuration file (*.cfg) (*.cfg)"_s, u"All Files (*.*) (*)"_s}));
        picker->selectFile(outside);
        Person::type(window, Qt::Key_Return);
    });
    bench.person.closes(u"lies outside the machine"_s);
    bench.dialog.exec();
}

} // namespace quoril::test
