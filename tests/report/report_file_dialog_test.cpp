// The Mail command in the real window: the Save dialog and what comes of it.

#include "resources/text_ids.h"
#include "shell/system_monitor.h"
#include "support/console_test.h"

#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QTemporaryDir>

namespace quoril::test {
namespace {

/// Types the name into the Save dialog and presses its Save button.
Person::Action saveAs(const QString& name)
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

TEST_F(ConsoleTest, MailStoresTheReportUnderTheChosenName)
{
    const QTemporaryDir folder;
    QAction& mail = action(command::Mail);
    EXPECT_FALSE(mail.isEnabled());
    tree().setCurrentItem(service(0));
    EXPECT_TRUE(mail.isEnabled());

    // The second time the file is there and replaced without a question.
    const QString report = folder.filePath(u"report.txt"_s);
    for (int i = 0; i < 2; ++i) {
        Person person;
        person.on(u"Save problem report"_s, saveAs(folder.filePath(u"report"_s)))
            .closes(u"stored as a file \""_s + QDir::toNativeSeparators(report) + u"\"."_s);
        mail.trigger();
        EXPECT_EQ(person.seen.size(), 2);
        QFile file(report);
        EXPECT_TRUE(file.size() > 1000);
        EXPECT_TRUE(file.resize(1));
    }

    // Without a tree there is nothing to report about.
    SystemMonitor monitor;
    CMainFrame bare(*m_console.document(), m_console.version(), {}, monitor);
    Person person;
    person.closes(u"02000042"_s);
    bare.OnMail();
}

} // namespace
} // namespace quoril::test
