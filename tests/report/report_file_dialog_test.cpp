// The Mail command in the real window: the Save dialog and what comes of it.

#include "resources/text_ids.h"
#include "shell/left_view.h"
#include "shell/main_frame.h"
#include "shell/quoril_manager_app.h"
#include "shell/system_monitor.h"
#include "support/fake_machine.h"
#include "support/person.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QTemporaryDir>

namespace quoril {
namespace {

using namespace Qt::StringLiterals;

/// Types the name into the Save dialog and presses its Save button.
test::Person::Action saveAs(const QString& name)
{
    return [name](QWidget& window) {
        auto& dialog = dynamic_cast<QFileDialog&>(window);
        auto* const edit = dialog.findChild<QLineEdit*>(u"fileNameEdit"_s);
        EXPECT_EQ(edit->text(), u"QuorilMailReport.txt"_s);
        EXPECT_EQ(
            dialog.nameFilters(), QStringList({u"TEXT file (*.txt) (*.txt)"_s, u"All Files (*.*) (*)"_s}));
        EXPECT_EQ(
            dialog.findChild<QComboBox*>(u"fileTypeCombo"_s)->itemText(1).trimmed(), u"All Files (*.*)"_s);
        EXPECT_FALSE(QApplication::overrideCursor());
        edit->setText(name);
        static_cast<QDialog&>(dialog).accept();
    };
}

TEST(MailCommand, StoresTheReportUnderTheChosenName)
{
    const QTemporaryDir folder;
    test::FakeMachine machine;
    const ScopedMachine inForce(machine);
    machine.addInstance(u"Alpha"_s);
    CQuorilManagerApp console;
    ASSERT_TRUE(console.InitInstance({u"console"_s}));
    CMainFrame& frame = *console.mainFrame();
    QAction& mail = *frame.commands().action(command::Mail);
    EXPECT_FALSE(mail.isEnabled());
    frame.GetLeftView()->setCurrentItem(frame.GetLeftView()->topLevelItem(0)->child(0));
    EXPECT_TRUE(mail.isEnabled());

    // The second time the file is there and replaced without a question.
    const QString report = folder.filePath(u"report.txt"_s);
    for (int i = 0; i < 2; ++i) {
        test::Person person;
        person.on(u"Save problem report"_s, saveAs(folder.filePath(u"report"_s)))
            .on(u"stored as a file \""_s + QDir::toNativeSeparators(report) + u"\"."_s,
                test::Person::presses(1));
        mail.trigger();
        EXPECT_EQ(person.seen.size(), 2);
        EXPECT_EQ(person.left(), 0U);
        QFile file(report);
        EXPECT_TRUE(file.size() > 1000);
        EXPECT_TRUE(file.resize(1));
    }

    // Without a tree there is nothing to report about.
    SystemMonitor monitor;
    CMainFrame bare(*console.document(), console.version(), {}, monitor);
    test::Person person;
    person.on(u"02000042"_s, test::Person::presses(1));
    bare.OnMail();
    EXPECT_EQ(person.left(), 0U);
}

} // namespace
} // namespace quoril
