#include "shell/main_frame.h"

#include "platform/session.h"
#include "resources/resource_module.h"
#include "resources/text_ids.h"
#include "services/prompt_dialogs.h"
#include "shell/help_view.h"
#include "support/console_test.h"

#include <QHeaderView>
#include <QMenu>
#include <QMenuBar>
#include <QScrollBar>
#include <QStatusBar>
#include <QStyledItemDelegate>
#include <QTextBrowser>
#include <QToolBar>
#include <QWhatsThis>

#include <memory>

namespace quoril::test {
namespace {

class MainFrameTest : public ConsoleTest
{
protected:
    MainFrameTest()
    {
        m_machine.fakeSystemInfo.name = u"PLANT7"_s;
        m_machine.fakeSystemInfo.fileVersions.insert(u"console"_s, u"Version 3.4.5.6"_s);
    }

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
    Person::type(tree(), Qt::Key_Down);
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
    Person person;
    for (const auto& [button, shown] : {std::pair(2, 2), {1, 3}}) { // Cancel, and OK, which shows the log
        person.on(u"Service management dialog"_s, Person::presses(button));
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
    person.on(u"Remove Service Dialog"_s, Person::presses(1));
    person.on(u"Do you really want"_s, Person::presses(6));
    action(command::Remove).trigger();
    EXPECT_EQ(person.seen.size(), 3) << "the pause follows";
    EXPECT_TRUE(enabledServiceCommands().isEmpty());
}

TEST_F(MainFrameTest, TheTreesPopUpOpensOverAServiceAloneAndSelectsItFirst)
{
    const auto popUpAt = [this](QPoint place, QContextMenuEvent::Reason reason) {
        QContextMenuEvent event(reason, place, tree().viewport()->mapToGlobal(place));
        QApplication::sendEvent(tree().viewport(), &event);
        const std::unique_ptr<QMenu> popUp(tree().findChild<QMenu*>());
        QStringList entries;
        for (const QAction* entry : popUp ? popUp->actions() : QList<QAction*>())
            entries.append(entry->isSeparator() ? u"|"_s : entry->text());
        return entries.join(u',');
    };
    const auto atStartOf
        = [this](QTreeWidgetItem* item) { return tree().visualItemRect(item).topLeft() + QPoint(6, 6); };
    const QPoint onRoot = atStartOf(tree().topLevelItem(0));
    const QPoint onBeta = atStartOf(service(1));
    const QPoint beside(tree().viewport()->width() - 1, onBeta.y());
    for (const QPoint place :
        {onRoot, beside, onBeta + QPoint(0, tree().visualItemRect(service(1)).height())}) {
        EXPECT_EQ(popUpAt(place, QContextMenuEvent::Mouse), QString());
        EXPECT_TRUE(tree().selectedItems().isEmpty());
    }
    tree().setCurrentItem(tree().topLevelItem(0));
    EXPECT_EQ(popUpAt(onRoot, QContextMenuEvent::Keyboard), QString());
    const QString entries
        = u"Manage QUORIL Service,Remove QUORIL Service,|,Schedule Service Start time,"
          "Schedule Service Stop time,|,Send Problem Report,|,Print Right Panel content,Print Preview,|,"
          "View Configuration,View Event Log"_s;
    EXPECT_EQ(popUpAt(onBeta, QContextMenuEvent::Mouse), entries);
    EXPECT_EQ(frame().windowTitle(), u"Beta - QUORIL Service Manager"_s);
    EXPECT_EQ(popUpAt({}, QContextMenuEvent::Keyboard), entries);
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
    Person person;
    person.closes(u": exe\\u202egpj\\u001b\n"_s);
    DialogPrompts(&frame()).message(name + u'\n');
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
        return order;
    };
    const QStringView popups[] = {u"32785 32801 32782 | 32778 | 32789 | 57612 | 57607 57609 57606 | 57665 ",
        u"59392 59393 | 32786 32787 | 32799 ", u"57667 | 57664 "};
    for (qsizetype i = 0; i < 3; ++i)
        EXPECT_EQ(orderOf(*frame().menuBar()->actions().at(i)->menu()), popups[i]);
    const auto* const toolBar = frame().findChild<QToolBar*>();
    EXPECT_EQ(orderOf(*toolBar),
        u"32785 32801 32782 | 32778 | 32789 | 57612 57607 | 32786 32787 | 32799 | 57669 | 57664 ");
    for (const QAction* entry : toolBar->actions())
        EXPECT_EQ(entry->icon().isNull(), entry->isSeparator()) << entry->objectName();
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
    Person person;
    person.closes(u": SERVICE-MANAGER: Can't execute system monitor : "_s
        + m_machine.systemInfo().errorText(2) + u" (0x2)"_s);
    action(command::SystemMonitor).trigger();
}

TEST_F(MainFrameTest, AnAnnouncedServiceIsReportedAndChangesNothing)
{
    m_machine.addInstance(u"Gamma"_s);
    Person person;
    person.closes(u": SERVICE-MANAGER: New QUORIL service installed"_s);
    m_machine.session().broadcast(u"WM_NEW_SERVICE_INSTALLED_MSG", HungWindows::AreAwaited);
    EXPECT_EQ(tree().topLevelItem(0)->childCount(), 2);
    frame().close();
    EXPECT_EQ(m_machine.fakeSession.subscriptions(), 0);
}

TEST_F(MainFrameTest, BarsHideAndTheAboutBoxShowsTheVersion)
{
    action(command::StatusBar).trigger();
    EXPECT_TRUE(frame().statusBar()->isHidden() && !action(command::StatusBar).isChecked());
    action(command::Toolbar).trigger();
    EXPECT_TRUE(frame().findChild<QToolBar*>()->isHidden() && !action(command::Toolbar).isChecked());
    action(command::Toolbar).trigger();
    EXPECT_TRUE(!frame().findChild<QToolBar*>()->isHidden() && action(command::Toolbar).isChecked());
    Person person;
    person.on(u"About"_s, [](QWidget& about) {
        QStringList texts;
        for (const QLabel* label : about.findChildren<QLabel*>())
            texts.append(label->text());
        EXPECT_TRUE(texts.contains(u"Quoril Service Management utility v. 3.4"_s));
        Person::type(about, Qt::Key_F1);
        const auto* const over = about.findChild<CHelpView*>();
        ASSERT_TRUE(over && over->isVisible()) << "F1 in a dialog opens the help over it";
        EXPECT_GT(over->findChild<QTextBrowser*>()->verticalScrollBar()->value(), 0) << "at its topic";
        about.close();
    });
    action(command::About).trigger();
}

TEST_F(MainFrameTest, ALinkOfTheHelpLeadsToItsSection)
{
    action(command::HelpTopics).trigger();
    auto* const help = frame().findChild<CHelpView*>();
    ASSERT_TRUE(help && help->isVisible());
    QWhatsThisClickedEvent link(u"#command-32785"_s);
    QApplication::sendEvent(frame().menuBar()->actions().front()->menu(), &link);
    EXPECT_GT(help->findChild<QTextBrowser*>()->verticalScrollBar()->value(), 0) << "the link leads nowhere";
}

class NoCompoundDocuments : public CQuorilManagerApp
{
public:
    using CQuorilManagerApp::CQuorilManagerApp;

protected:
    bool initCompoundDocuments() override { return false; }
};

TEST(Start, EndsWithAMessageWhereItCanNotGoOn)
{
    FakeMachine machine;
    Person person;
    person.closes(u": "_s + loadText(text::OleInitFailed));
    EXPECT_FALSE(NoCompoundDocuments().InitInstance({u"console"_s}));
    const QString folder = QCoreApplication::applicationDirPath();
    person.closes(u": no/such/file was not found."_s);
    EXPECT_FALSE(CQuorilManagerApp().InitInstance({u"console"_s, u"no/such/file"_s}));
    person.closes(u": "_s + folder + u" : Access is denied.\r\n (0x5)"_s);
    EXPECT_FALSE(CQuorilManagerApp().InitInstance({u"console"_s, folder}));
}

TEST(Start, TakesTheLanguageOfTheUser)
{
    FakeMachine machine;
    machine.fakeSession.userLanguage = u"deu"_s;
    machine.fakeSystemInfo.texts.clear();
    CQuorilManagerApp console;
    ASSERT_TRUE(console.InitInstance({u"console"_s}));
    EXPECT_EQ(console.mainFrame()->menuBar()->actions().last()->text(), u"&Hilfe"_s);
    EXPECT_EQ(console.version().major, 0);
    ActivateResourceModule(ResourceModule());
}

} // namespace
} // namespace quoril::test
