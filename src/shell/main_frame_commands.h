#pragma once

#include <QHash>
#include <QObject>

#include <span>

class QAction;
class QMenu;
class QMenuBar;
class QToolBar;

namespace quoril {

class CMainFrame;
struct MenuEntry;

/// Which commands of the frame are enabled. The first six move together: they need a selected service.
struct CommandFlags
{
    bool m_can_manage = false;
    bool m_can_remove = false;
    bool m_can_schedule = false;
    bool m_can_mail = false;
    bool m_can_event_log = false;
    bool m_can_configuration = false;
    bool m_can_security = true;
    bool m_can_update_list = true;
    bool m_can_exit = true;

    void setServiceCommands(bool enabled);
};

/// One command of the menu bar and the toolbar. Its caption stands in the menu resource, its prompt and tool
/// tip in the string of the same id.
struct FrameCommand
{
    quint32 id;
    void (CMainFrame::*handler)();
    bool CommandFlags::*enabledBy; ///< null: always enabled
    bool checkable;
};

/// The commands of menu bar and toolbar.
std::span<const FrameCommand> frameCommands();

/// The toolbar's buttons in their order, 0 being a separator.
std::span<const quint32> toolbarCommands();

/// The frame's commands as actions: one for each command, shared by menu bar, toolbar and keyboard.
class CommandActions : public QObject
{
public:
    /// The actions call the frame, which outlives them.
    explicit CommandActions(CMainFrame& frame);

    /// The command's action, null for an id that is no command.
    QAction* action(quint32 id) const { return m_actions.value(id); }

    /// Fills the menu bar with the popups of menu resource 128. Entries without a command of the table are
    /// left out.
    void buildMenuBar(QMenuBar& bar);
    void buildToolBar(QToolBar& bar);

    /// Runs every command's update: enabled or not by its flag.
    void update(const CommandFlags& flags);

private:
    void addEntries(QMenu& menu, const std::vector<MenuEntry>& entries);

    QHash<quint32, QAction*> m_actions;
};

} // namespace quoril
