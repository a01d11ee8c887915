#include "shell/main_frame.h"

#include "platform/session.h"
#include "resources/resource_module.h"
#include "resources/text_ids.h"
#include "services/prompt_dialogs.h"
#include "shell/help_view.h"
#include "shell/left_view.h"
#include "shell/quoril_manager_app.h"
#include "shell/quoril_manager_doc.h"
#include "support/fake_machine.h"
#include "support/person.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QScrollBar>
#include <QStatusBar>
#include <QStyledItemDelegate>
#include <QTextBrowser>
#include <QToolBar>
#include <QWhatsThis>

namespace quoril {
namespace {

using test::FakeMachine;
using namespace Qt::StringLiterals;

/// Closes the next modal box and keeps what it said.
struct NextBox : test::Person
{
    NextBox()
    {
        on({}, [this](QWidget& box) {
            for (const QLabel* label : box.findChildren<QLabel*>())
                labels.append(label->text());
            if (const auto* message = qobject_cast<QMessageBox*>(&box))
                text = message->text();
            box.close();
        });
    }
    QString text;
    QStringList labels;
};

class MainFrameTest : public testing::Test
{
protected:
    FakeMachine m_machine;
    ScopedMachine m_inForce{m_machine};
    CQuorilManagerApp m_console;

    void SetUp() override
    {
        m_machine.fakeSystemInfo.name = u"PLANT7"_s;
        m_machine.fakeSystemInfo.fileVersions.insert(u"console"_s, u"Version 3.4.5.6"_s);
        m_machine.addInstance(u"Alpha"_s);
        m_machine.addInstance(u"Beta"_s);
        ASSERT_TRUE(m_console.InitInstance({u"console"_s}));
    }

    CMainFrame& frame() { return *m_console.mainFrame(); }
    CLeftView& tree() { return *frame().GetLeftView(); }
    QTreeWidgetItem* service(int index) { return tree().topLevelItem(0)->child(index); }
    QAction& action(quint32 id) { return *frame().commands().action(id); }

    QList<quint32> enabledOf(std::initializer_list<quint32> ids)
    {
        QList<quint32> enabled;
        for (const quint32 id : ids) {
            if (action(id).isEnabled())
                enabled.append(id);
        }
        return enabled;
    }
    QList<quint32> enabledServiceCommands()
    {
        return enabledOf({command::Manage, command::Remove, command::Schedule, command::Mail,
            command::EventLog, command::Configuration});
    }
    int columns()
    {
        const auto* panel = frame().findChild<QHeaderView*>();
        for (const QHeaderView* header : frame().findChildren<QHeaderView*>()) {
            if (!tree().isAncestorOf(header) && header->orientation() == Qt::Horizontal)
                panel = header;
        }
        return panel->count();
    }
};

const QString StartCaption = u"Select QUORIL Service from the list... - QUORIL Service Manager"_s;

TEST_F(MainFrameTest, StartsWithTheTreeFilledAndNothingSelected)
{
    EXPECT_EQ(frame().windowTitle(), StartCaption);
    EXPECT_EQ(tree().topLevelItem(0)->text(0), u"PLANT7"_s);
    EXPECT_TRUE(tree().topLevelItem(0)->isExpanded());
    ASSERT_EQ(tree().topLevelItem(0)->childCount(), 2);
    EXPECT_EQ(service(1)->text(0), u"Beta"_s);
    EXPECT_EQ(columns(), 0);
    EXPECT_TRUE(enabledServiceCommands().isEmpty());
    EXPECT_TRUE(action(command::EventLog).isChecked());
    EXPECT_EQ(
        enabledOf({command::UpdateList, command::Exit, command::About, command::SystemMonitor}).size(), 4);

    tree().setFocus(Qt::TabFocusReason);
    EXPECT_TRUE(tree().selectedItems().isEmpty());
    EXPECT_EQ(&tree().GetSelectedService(), &g_no_service);
    QKeyEvent down(QEvent::KeyPress, Qt::Key_Down, Qt::NoModifier);
    QApplication::sendEvent(&tree(), &down);
    EXPECT_EQ(tree().selectedItems(), QList<QTreeWidgetItem*>{tree().topLevelItem(0)});
}

TEST_F(MainFrameTest, TheSelectionDrivesCommandsPanelAndCaption)
{
    tree().setCurrentItem(service(1));
    EXPECT_EQ(frame().windowTitle(), u"Beta - QUORIL Service Manager"_s);
    EXPECT_EQ(enabledServiceCommands().size(), 6);
    EXPECT_EQ(tree().GetSelectedService().Name, u"Beta"_s);
    EXPECT_EQ(columns(), 3);

    action(command::Configuration).trigger();
    EXPECT_EQ(columns(), 2);
    EXPECT_TRUE(action(command::Configuration).isChecked() && !action(command::EventLog).isChecked());
    test::Person person;
    for (const auto& [button, shown] : {std::pair(2, 2), {1, 3}}) { // Cancel, and OK, which shows the log
        person.on(u"Service management dialog"_s, test::Person::presses(button));
        action(command::Manage).trigger();
        EXPECT_EQ(columns(), shown);
        EXPECT_EQ(action(command::EventLog).isChecked(), shown == 3);
    }
    tree().setCurrentItem(service(0));
    EXPECT_EQ(columns(), 2);

    tree().setCurrentItem(tree().topLevelItem(0));
    EXPECT_EQ(frame().windowTitle(), StartCaption);
    EXPECT_TRUE(enabledServiceCommands().isEmpty());
    EXPECT_EQ(columns(), 3);

    tree().setCurrentItem(service(1));
    person.seen.clear();
    person.on(u"Remove Service Dialog"_s, test::Person::presses(1));
    person.on(u"Do you really want"_s, test::Person::presses(6));
    action(command::Remove).trigger();
    EXPECT_EQ(person.seen.size(), 3) << "the pause follows";
    EXPECT_TRUE(enabledServiceCommands().isEmpty());
}

TEST_F(MainFrameTest, MarksInANameAreShownAndTurnNothing)
{
    const QString name = u"exe\u202Egpj\x1b"_s;
    m_machine.addInstance(name);
    action(command::UpdateList).trigger();
    tree().setCurrentItem(service(2));
    EXPECT_EQ(tree().GetSelectedService().Name, name);
    EXPECT_TRUE(frame().windowTitle().startsWith(u"exe\\u202egpj"));
    const auto* delegate = qobject_cast<QStyledItemDelegate*>(tree().itemDelegate());
    EXPECT_EQ(delegate->displayText(service(2)->text(0), {}), u"exe\\u202egpj\\u001b");
    NextBox box;
    DialogPrompts(&frame()).message(name + u'\n');
    EXPECT_EQ(box.text, u"exe\\u202egpj\\u001b\n");
}

TEST_F(MainFrameTest, ARefreshKeepsTheCommandsAndDropsTheSelection)
{
    tree().setCurrentItem(service(0));
    m_machine.addInstance(u"Gamma"_s);
    action(command::UpdateList).trigger();
    EXPECT_EQ(tree().topLevelItem(0)->childCount(), 3);
    EXPECT_TRUE(tree().selectedItems().isEmpty());
    EXPECT_EQ(&tree().GetSelectedService(), &g_no_service);
    EXPECT_EQ(enabledServiceCommands().size(), 6);
    EXPECT_EQ(columns(), 3);
    m_machine.fakeRegistry.refuse(u"SYSTEM", key_access::QueryValue);
    action(command::UpdateList).trigger();
    EXPECT_EQ(tree().topLevelItem(0)->childCount(), 0);
}

TEST_F(MainFrameTest, InReadOnlyModeTheTreeNoLongerDrivesTheFrame)
{
    tree().setCurrentItem(service(0));
    frame().m_read_only = true;
    tree().setCurrentItem(service(1));
    EXPECT_EQ(frame().windowTitle(), u"Alpha - QUORIL Service Manager"_s);
    EXPECT_EQ(tree().GetSelectedService().Name, u"Beta"_s);
}

TEST_F(MainFrameTest, EveryCommandHasCaptionPromptAndHelp)
{
    for (const FrameCommand& command : frameCommands()) {
        EXPECT_FALSE(action(command.id).statusTip().isEmpty()) << command.id;
        EXPECT_FALSE(action(command.id).statusTip().contains(u'\n')) << command.id;
        EXPECT_FALSE(action(command.id).toolTip().isEmpty()) << command.id;
    }
    const auto orderOf = [](const QWidget& bar) {
        QString order;
        for (const QAction* entry : bar.actions())
            order += (entry->isSeparator() ? u"|"_s : entry->objectName()) + u' ';
        return order.toStdString();
    };
    const char* const popups[] = {"32785 32801 32782 | 32778 | 32789 | 57612 | 57607 57609 57606 | 57665 ",
        "59392 59393 | 32786 32787 | 32799 ", "57667 | 57664 "};
    for (qsizetype i = 0; i < 3; ++i)
        EXPECT_EQ(orderOf(*frame().menuBar()->actions().at(i)->menu()), popups[i]);
    const auto* const toolBar = frame().findChild<QToolBar*>();
    EXPECT_EQ(orderOf(*toolBar),
        "32785 32801 32782 | 32778 | 32789 | 57612 57607 | 32786 32787 | 32799 | 57669 | 57664 ");
    for (const QAction* entry : toolBar->actions())
        EXPECT_EQ(entry->icon().isNull(), entry->isSeparator()) << entry->objectName().toStdString();
}

TEST_F(MainFrameTest, TheSystemMonitorIsBroughtForwardOrStarted)
{
    m_machine.fakeSession.windows.insert(u"Performance Monitor"_s, true);
    m_machine.calls.takeLog();
    action(command::SystemMonitor).trigger();
    EXPECT_EQ(m_machine.calls.takeLog(),
        QStringList({u"restore Performance Monitor"_s, u"bring forward Performance Monitor"_s}));
    m_machine.fakeSession.windows.clear();
    {
        CQuorilManagerApp other;
        ASSERT_TRUE(other.InitInstance({u"console"_s}));
        m_machine.calls.takeLog();
        other.mainFrame()->commands().action(command::SystemMonitor)->trigger();
        EXPECT_EQ(m_machine.calls.takeLog(), QStringList(u"create perfmon.exe|perfmon.exe"_s));
    }
    EXPECT_TRUE(m_machine.calls.takeLog().contains(u"terminate 0"_s)); // with the console that started it
    m_machine.fakeProcesses.createError = error::FileNotFound;
    NextBox box;
    action(command::SystemMonitor).trigger();
    EXPECT_EQ(box.text,
        u"SERVICE-MANAGER: Can't execute system monitor : "_s + m_machine.systemInfo().errorText(2)
            + u" (0x2)"_s);
}

TEST_F(MainFrameTest, AnAnnouncedServiceIsToldAndChangesNothing)
{
    m_machine.addInstance(u"Gamma"_s);
    NextBox box;
    m_machine.session().broadcast(u"WM_NEW_SERVICE_INSTALLED_MSG", HungWindows::AreAwaited);
    EXPECT_EQ(box.text, u"SERVICE-MANAGER: New QUORIL service installed"_s);
    EXPECT_EQ(tree().topLevelItem(0)->childCount(), 2);
    frame().close();
    EXPECT_EQ(m_machine.fakeSession.subscriptions(), 0);
}

TEST_F(MainFrameTest, BarsHideAndTheAboutBoxTellsTheVersion)
{
    action(command::StatusBar).trigger();
    EXPECT_TRUE(frame().statusBar()->isHidden() && !action(command::StatusBar).isChecked());
    action(command::Toolbar).trigger();
    EXPECT_TRUE(frame().findChild<QToolBar*>()->isHidden() && !action(command::Toolbar).isChecked());
    action(command::Toolbar).trigger();
    EXPECT_TRUE(!frame().findChild<QToolBar*>()->isHidden() && action(command::Toolbar).isChecked());
    NextBox box;
    action(command::About).trigger();
    EXPECT_TRUE(box.labels.contains(u"Quoril Service Management utility v. 3.4"_s));
}

TEST_F(MainFrameTest, TheHelpHasASectionForEveryCommand)
{
    action(command::HelpTopics).trigger();
    auto* const help = frame().findChild<CHelpView*>();
    ASSERT_TRUE(help && help->isVisible());
    auto* const contents = help->findChild<QTreeWidget*>();
    QSet<QString> sections;
    for (QTreeWidgetItemIterator item(contents); *item; ++item)
        sections.insert((*item)->data(0, Qt::UserRole).toString());
    for (const FrameCommand& command : frameCommands())
        EXPECT_TRUE(sections.contains(u"command-"_s + QString::number(command.id))) << command.id;
    QWhatsThisClickedEvent link(u"#command-32785"_s);
    QApplication::sendEvent(frame().menuBar()->actions().front()->menu(), &link);
    EXPECT_GT(help->findChild<QTextBrowser*>()->verticalScrollBar()->value(), 0) << "the link leads nowhere";

    test::Person person;
    person.on(u"About"_s, [](QWidget& about) {
        QKeyEvent f1(QEvent::KeyPress, Qt::Key_F1, Qt::NoModifier);
        QApplication::sendEvent(&about, &f1);
        const auto* const over = about.findChild<CHelpView*>();
        EXPECT_TRUE(over && over->isVisible()) << "F1 in a dialog opens the help over it";
        about.close();
    });
    action(command::About).trigger();
    EXPECT_EQ(person.left(), 0U);
}

class NoCompoundDocuments : public CQuorilManagerApp
{
public:
    using CQuorilManagerApp::CQuorilManagerApp;

protected:
    bool InitCompoundDocuments() override { return false; }
};

TEST(Start, EndsWithAMessageWhereItCanNotGoOn)
{
    FakeMachine machine;
    const ScopedMachine inForce(machine);
    {
        NextBox box;
        EXPECT_FALSE(NoCompoundDocuments().InitInstance({u"console"_s}));
        EXPECT_EQ(box.text, LoadText(text::OleInitFailed));
    }
    const QString folder = QCoreApplication::applicationDirPath();
    for (const auto& [file, told] : {std::pair(u"no/such/file"_s, u"no/such/file was not found."_s),
             {folder, folder + u" : Access is denied.\r\n (0x5)"_s}}) {
        NextBox box;
        EXPECT_FALSE(CQuorilManagerApp().InitInstance({u"console"_s, file}));
        EXPECT_EQ(box.text, told);
    }
}

TEST(Start, TakesTheLanguageOfTheUser)
{
    FakeMachine machine;
    const ScopedMachine inForce(machine);
    machine.fakeSession.userLanguage = u"deu"_s;
    machine.fakeSystemInfo.texts.clear();
    CQuorilManagerApp console;
    ASSERT_TRUE(console.InitInstance({u"console"_s}));
    EXPECT_EQ(console.mainFrame()->menuBar()->actions().last()->text(), u"&Hilfe"_s);
    EXPECT_EQ(console.version().major, 0);
    ActivateResourceModule(ResourceModule());
}

} // namespace
} // namespace quoril
