#pragma once

#include "schedule/schedule_table.h"
#include "services/service_info.h"
#include "shell/main_frame_commands.h"

#include <QMainWindow>
#include <QPointer>

#include <memory>

class QLabel;
class QSplitter;
class QToolBar;

namespace quoril {

class CHelpView;
class CLeftView;
class CQuorilManagerDoc;
class CQuorilManagerView;
class IdleLockFrame;
class MessageSubscription;
class SystemMonitor;
struct VersionRecord;

/// The single top-level window: the tree of services on the left, the panel on the right, and the state of
/// the commands. All of its work runs on the main thread.
class CMainFrame : public QMainWindow
{
    Q_OBJECT

public:
    /// The document, the version and the monitor outlive the frame.
    CMainFrame(
        CQuorilManagerDoc& document, const VersionRecord& version, QString helpFile, SystemMonitor& monitor);
    ~CMainFrame() override;

    /// Builds panes, bars and menus, then scans the registry. Called once, before the frame is the
    /// application's main window.
    void OnCreate();

    /// From now on the frame is the application's main window, which the tree asks for.
    void becomeMainWindow();

    CQuorilManagerDoc& document() { return m_document; }
    CLeftView* GetLeftView() const { return m_leftView; }
    CQuorilManagerView* GetRightView() const { return m_rightView; }
    CommandActions& commands() { return *m_commands; }
    const CommandFlags& flags() const { return m_flags; }

    /// Sets the six flags of the commands that need a selected service.
    void setServiceCommands(bool enabled);

    /// Empties the panel, then shows the selected service by the panel mode.
    void RefreshPanel();
    void ClearPanel();
    /// Show the selected service's logs or configuration, without touching the panel mode.
    void ShowEventLog();
    void ShowConfiguration();
    /// A message box with only an OK button.
    void ShowFrameMessage(const QString& text);

    /// Rebuilds the catalogue and the tree. References to records are void afterwards, and nothing is
    /// selected.
    void RefreshServiceList();
    /// Scans the registry into the document: 0, or -1 when the services key can't be opened.
    int ScanServices();

    void OnManageService();
    void OnRemoveService();
    void OnSchedule();
    /// The same dialog, with Set Stop proposed.
    void OnScheduleStop();
    void OnSecurity();
    /// Writes the problem report of the selected service.
    void OnMail();
    void OnPrint();
    void OnPrintPreview();
    void OnPrintSetup();
    void OnViewEventLog();
    void OnViewConfiguration();
    void OnViewToolBar();
    void OnViewStatusBar();
    void OnSystemMonitor();
    void OnHelp();
    void OnHelpFinder();
    void OnContextHelp();
    void OnAbout();
    void OnExit();
    void OnNewServiceInstalled();

    /// Starts the worker of the orders, once in the life of the frame.
    void StartScheduleWorker();

    /// The message loop is idle: the idle time is measured from now on.
    void ArmIdleTimer();
    void KillIdleTimers();
    /// Nobody was there for the chosen time: goes into read-only mode, which ends with the process, and locks
    /// the workstation.
    void LockNow();

    ScheduleTable SchedTable;

    bool m_read_only = false; ///< the tree no longer drives the frame

protected:
    bool event(QEvent* event) override;
    /// Sees F1 in every dialog, and the links of explanations.
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void OnCreateClient();
    void createToolBar();
    void createStatusBar();
    void checkPanelCommands(bool eventLog);
    void showTopic(const QString& link);
    void updateCaption(const QString& title);
    void showLockKeys();
    void DestroyWindow();
    void runScheduleDialog(bool proposeStop);

    CQuorilManagerDoc& m_document;
    const VersionRecord& m_version;
    QString m_helpFile;
    SystemMonitor& m_monitor;
    CommandFlags m_flags;
    bool m_show_event_log = true;
    bool m_show_configuration = false;

    std::unique_ptr<CommandActions> m_commands;
    QSplitter* m_splitter = nullptr;
    QToolBar* m_toolBar = nullptr;
    QList<QLabel*> m_lockKeyPanes;
    CLeftView* m_leftView = nullptr;
    CQuorilManagerView* m_rightView = nullptr;
    QPointer<CHelpView> m_helpView;
    std::unique_ptr<IdleLockFrame> m_idleLock;
    std::unique_ptr<MessageSubscription> m_newServiceSubscription;
};

} // namespace quoril
