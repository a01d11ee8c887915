#include "shell/main_frame_commands.h"

#include "resources/resource_module.h"
#include "resources/text_ids.h"
#include "shell/help_view.h"
#include "shell/main_frame.h"

#include <QAction>
#include <QFile>
#include <QIcon>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

using F = CommandFlags;
using M = CMainFrame;

constexpr FrameCommand Commands[] = {
    {command::Manage, &M::OnManageService, &F::m_can_manage, false},
    {command::Remove, &M::OnRemoveService, &F::m_can_remove, false},
    {command::UpdateList, &M::RefreshServiceList, &F::m_can_update_list, false},
    {command::Schedule, &M::OnSchedule, &F::m_can_schedule, false},
    {command::Security, &M::OnSecurity, &F::m_can_security, false},
    {command::Mail, &M::OnMail, &F::m_can_mail, false},
    {command::Print, &M::OnPrint, nullptr, false},
    {command::PrintPreview, &M::OnPrintPreview, nullptr, false},
    {command::PrintSetup, &M::OnPrintSetup, nullptr, false},
    {command::Exit, &M::OnExit, &F::m_can_exit, false},
    {command::Toolbar, &M::OnViewToolBar, nullptr, true},
    {command::StatusBar, &M::OnViewStatusBar, nullptr, true},
    {command::EventLog, &M::OnViewEventLog, &F::m_can_event_log, true},
    {command::Configuration, &M::OnViewConfiguration, &F::m_can_configuration, true},
    {command::SystemMonitor, &M::OnSystemMonitor, nullptr, false},
    {command::HelpTopics, &M::OnHelpFinder, nullptr, false},
    {command::ContextHelp, &M::OnContextHelp, nullptr, false},
    {command::About, &M::OnAbout, nullptr, false},
};

/// Commands of other roads than menu and toolbar: keys, and programs that send them.
constexpr FrameCommand HiddenCommands[] = {
    {command::PrintDirect, &M::OnPrint, nullptr, false},
    {command::Help, &M::OnHelp, nullptr, false},
    {command::DefaultHelp, &M::OnHelpFinder, nullptr, false},
};

constexpr quint32 ToolbarOrder[] = {
    command::Manage,
    command::Remove,
    command::UpdateList,
    0,
    command::Schedule,
    0,
    command::Security,
    0,
    command::Mail,
    command::Print,
    0,
    command::EventLog,
    command::Configuration,
    0,
    command::SystemMonitor,
    0,
    command::ContextHelp,
    0,
    command::About,
};

/// The icon of a command, for both resolutions; an empty one where the command has none.
QIcon commandIcon(quint32 id)
{
    const QString path = u":/quoril/icons/"_s + QString::number(id) + u".png"_s;
    return QFile::exists(path) ? QIcon(path) : QIcon();
}

/// The caption without its mnemonic and its dots.
QString plainCaption(QString caption)
{
    caption.remove(u'&');
    while (caption.endsWith(u'.'))
        caption.chop(1);
    return caption;
}

} // namespace

void CommandFlags::setServiceCommands(bool enabled)
{
    m_can_manage = m_can_remove = m_can_schedule = m_can_mail = m_can_event_log = m_can_configuration
        = enabled;
}

std::span<const FrameCommand> frameCommands()
{
    return Commands;
}

std::span<const quint32> toolbarCommands()
{
    return ToolbarOrder;
}

CommandActions::CommandActions(CMainFrame& frame)
{
    for (const FrameCommand& command : Commands) {
        auto* action = new QAction(this);
        const QString prompt = loadText(command.id);
        const qsizetype lineEnd = prompt.indexOf(u'\n');
        action->setObjectName(QString::number(command.id));
        action->setStatusTip(prompt.left(lineEnd));
        action->setToolTip(lineEnd < 0 ? QString() : prompt.mid(lineEnd + 1));
        action->setIcon(commandIcon(command.id));
        action->setCheckable(command.checkable);
        // A menu shows the check mark where there is no icon in its place.
        action->setIconVisibleInMenu(!command.checkable);
        action->setMenuRole(QAction::NoRole);
        connect(
            action, &QAction::triggered, &frame, [&frame, handler = command.handler] { (frame.*handler)(); });
        m_actions.insert(command.id, action);
    }
    for (const FrameCommand& command : HiddenCommands) {
        auto* const action = new QAction(this);
        connect(
            action, &QAction::triggered, &frame, [&frame, handler = command.handler] { (frame.*handler)(); });
        m_actions.insert(command.id, action);
    }
}

void CommandActions::buildMenuBar(QMenuBar& bar)
{
    for (const MenuEntry& popup : activeResources().menu(menu::Main))
        addEntries(*bar.addMenu(popup.caption), popup.entries);
}

void CommandActions::addEntries(QMenu& menu, const std::vector<MenuEntry>& entries)
{
    for (const MenuEntry& entry : entries) {
        if (entry.command == 0) {
            menu.addSeparator();
            continue;
        }
        QAction* const known = action(entry.command);
        if (!known)
            continue;
        known->setText(entry.caption);
        if (known->toolTip().isEmpty() || known->toolTip() == plainCaption(known->text()))
            known->setToolTip(plainCaption(entry.caption));
        known->setWhatsThis(CHelpView::link(entry.command, plainCaption(entry.caption), known->statusTip()));
        menu.addAction(known);
    }
}

void CommandActions::buildToolBar(QToolBar& bar)
{
    for (const quint32 id : ToolbarOrder) {
        if (id == 0)
            bar.addSeparator();
        else
            bar.addAction(action(id));
    }
}

void CommandActions::update(const CommandFlags& flags)
{
    for (const FrameCommand& command : Commands)
        action(command.id)->setEnabled(!command.enabledBy || flags.*command.enabledBy);
}

} // namespace quoril
