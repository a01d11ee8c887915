#include "shell/main_frame.h"

#include "access/idle_lock_frame.h"
#include "access/security_dialog.h"
#include "logs/coded_message_dialog.h"
#include "logs/panel_row_painter.h"
#include "logs/quoril_manager_view.h"
#include "platform/clock.h"
#include "platform/machine.h"
#include "platform/session.h"
#include "platform/terminal_text.h"
#include "report/problem_report.h"
#include "report/report_file_dialog.h"
#include "resources/resource_module.h"
#include "resources/text_ids.h"
#include "schedule/schedule_dialog.h"
#include "schedule/schedule_time.h"
#include "services/prompt_dialogs.h"
#include "services/service_app.h"
#include "services/service_installation.h"
#include "services/service_management_dialog.h"
#include "shell/about_dialog.h"
#include "shell/focus_frame_widget.h"
#include "shell/help_view.h"
#include "shell/left_view.h"
#include "shell/quoril_manager_doc.h"
#include "shell/screen_fit_widget.h"
#include "shell/service_catalogue.h"
#include "shell/system_monitor.h"
#include "shell/wait_cursor_widget.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QSplitter>
#include <QStatusBar>
#include <QToolBar>
#include <QWhatsThis>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr int LeftPaneWidth = 200;
constexpr int ToolbarIconSize = 24;
constexpr int FirstHeight = 680;

/// Wide enough for a whole date in the panel's first column, an eighth of what the tree leaves.
int firstWidth(const QSplitter& splitter, const QWidget& panel)
{
    using namespace Qt::StringLiterals;
    constexpr int DateParts = 8;
    const int date = panel.fontMetrics().horizontalAdvance(u"8888-88-88 88:88:88"_s)
        + 2 * PanelRowPainter::margin(&panel);
    const QStyle& style = *panel.style();
    const int frames = 4 * style.pixelMetric(QStyle::PM_DefaultFrameWidth) + splitter.handleWidth()
        + style.pixelMetric(QStyle::PM_ScrollBarExtent);
    return LeftPaneWidth + DateParts * (date + 1) + frames;
}

} // namespace

CMainFrame::CMainFrame(
    CQuorilManagerDoc& document, const VersionRecord& version, QString helpFile, SystemMonitor& monitor)
    : m_document(document)
    , m_version(version)
    , m_helpFile(std::move(helpFile))
    , m_monitor(monitor)
{
    setObjectName(u"CMainFrame");
    setContextMenuPolicy(Qt::NoContextMenu);
    connect(&m_document, &CQuorilManagerDoc::titleChanged, this, &CMainFrame::updateCaption);
    m_idleLock = std::make_unique<IdleLockFrame>(
        *this, [this] { return m_document.m_lock_timeout; }, [this] { LockNow(); });
    readTimeZone();
}

CMainFrame::~CMainFrame() = default;

void CMainFrame::OnCreate()
{
    OnCreateClient();
    m_commands = std::make_unique<CommandActions>(*this);
    m_commands->buildMenuBar(*menuBar());
    createToolBar();
    createStatusBar();
    // F1 is the one key that the status bar's idle text promises; other accelerators are not applied.
    QAction* const help = m_commands->action(command::Help);
    help->setShortcut(QKeySequence(Qt::Key_F1));
    addAction(help);
    qApp->installEventFilter(this);
    m_commands->action(command::Toolbar)->setChecked(true);
    m_commands->action(command::StatusBar)->setChecked(true);
    m_newServiceSubscription
        = machine().session().subscribe(NewServiceInstalledMessage, [this] { OnNewServiceInstalled(); });
    RefreshServiceList();
    checkPanelCommands(true);
    m_commands->update(m_flags);
    const int width = firstWidth(*m_splitter, *m_rightView);
    m_splitter->setSizes({LeftPaneWidth, width - LeftPaneWidth});
    if (!resizeToScreen(*this, {width, FirstHeight}))
        setWindowState(windowState() | Qt::WindowMaximized);
}

void CMainFrame::OnCreateClient()
{
    m_splitter = new QSplitter(Qt::Horizontal, this);
    m_splitter->setChildrenCollapsible(false);
    m_leftView = new CLeftView(m_document, m_splitter);
    m_leftView->setAccessibleName(loadText(text::TreeName));
    m_rightView = new CQuorilManagerView(m_splitter);
    m_rightView->setAccessibleName(loadText(text::PanelName));
    m_splitter->setStretchFactor(0, 0);
    m_splitter->setStretchFactor(1, 1);
    showFocusFrame(*m_leftView);
    showFocusFrame(*m_rightView);
    setCentralWidget(m_splitter);
}

void CMainFrame::createToolBar()
{
    m_toolBar = addToolBar(loadText(text::ToolbarName));
    m_toolBar->setObjectName(QString::number(command::Toolbar));
    m_toolBar->setIconSize(QSize(ToolbarIconSize, ToolbarIconSize));
    m_toolBar->setContextMenuPolicy(Qt::PreventContextMenu);
    m_commands->buildToolBar(*m_toolBar);
    connect(m_toolBar, &QToolBar::visibilityChanged, this,
        [this] { m_commands->action(command::Toolbar)->setChecked(!m_toolBar->isHidden()); });
}

void CMainFrame::createStatusBar()
{
    auto* message = new QLabel(loadText(text::IdleMessage), this);
    message->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    statusBar()->addWidget(message, 1);
    for (const quint32 id : {text::IndicatorCaps, text::IndicatorNum, text::IndicatorScroll}) {
        auto* pane = new QLabel(loadText(id), this);
        pane->setFrameStyle(QFrame::Panel | QFrame::Sunken);
        pane->setMargin(2);
        statusBar()->addPermanentWidget(pane);
        m_lockKeyPanes.append(pane);
    }
    showLockKeys();
}

void CMainFrame::becomeMainWindow()
{
    m_leftView->setMainWindow(this);
}

void CMainFrame::setServiceCommands(bool enabled)
{
    m_flags.setServiceCommands(enabled);
    m_commands->update(m_flags);
}

void CMainFrame::checkPanelCommands(bool eventLog)
{
    m_commands->action(command::EventLog)->setChecked(eventLog);
    m_commands->action(command::Configuration)->setChecked(!eventLog);
}

void CMainFrame::OnPrint()
{
    if (m_rightView)
        m_rightView->PrintPanel();
}

void CMainFrame::OnPrintPreview()
{
    if (m_leftView)
        m_leftView->OnFilePrintPreview();
}

void CMainFrame::OnPrintSetup()
{
    if (m_rightView)
        m_rightView->printing().setUp(this);
}

void CMainFrame::OnViewEventLog()
{
    m_show_event_log = true;
    m_show_configuration = false;
    ShowEventLog();
}

void CMainFrame::OnViewConfiguration()
{
    m_show_configuration = true;
    m_show_event_log = false;
    ShowConfiguration();
}

void CMainFrame::ShowEventLog()
{
    checkPanelCommands(true);
    const WaitCursor waiting;
    ClearPanel();
    m_rightView->ShowLogTable(m_leftView->GetSelectedService());
}

void CMainFrame::ShowConfiguration()
{
    checkPanelCommands(false);
    const WaitCursor waiting;
    m_rightView->ShowConfigurationTable(m_leftView->GetSelectedService());
}

void CMainFrame::ClearPanel()
{
    m_rightView->ClearList();
}

void CMainFrame::RefreshPanel()
{
    ClearPanel();
    if (m_show_event_log)
        ShowEventLog();
    else if (m_show_configuration)
        ShowConfiguration();
}

void CMainFrame::ShowFrameMessage(const QString& text)
{
    DialogPrompts(this).message(text);
}

void CMainFrame::RefreshServiceList()
{
    const WaitCursor waiting;
    m_document.ClearServices();
    m_leftView->ClearTree();
    ScanServices();
    m_leftView->FillTree();
}

int CMainFrame::ScanServices()
{
    return quoril::ScanServices(m_document) ? 0 : -1;
}

void CMainFrame::OnManageService()
{
    ServiceManagementDialog dialog(this);
    dialog.SetService(m_leftView->GetSelectedService());
    if (dialog.exec() == QDialog::Accepted)
        ShowEventLog();
}

void CMainFrame::OnRemoveService()
{
    constexpr quint32 RemovalPauseMilliseconds = 2000;
    DialogPrompts prompts(this);
    const QString name = m_leftView->GetSelectedService().Name;
    if (ServiceApp().RemoveService(name, true, prompts) != 0)
        return;
    prompts.inform(loadText(text::WaitRemoved), RemovalPauseMilliseconds);
    setServiceCommands(false);
    RefreshServiceList();
}

void CMainFrame::OnSchedule()
{
    runScheduleDialog(false);
}

void CMainFrame::OnScheduleStop()
{
    runScheduleDialog(true);
}

void CMainFrame::runScheduleDialog(bool proposeStop)
{
    using Focus = ScheduleDialog::FirstFocus;
    ScheduleDialog dialog(
        SchedTable, [this] { return m_leftView ? &m_leftView->GetSelectedService() : nullptr; },
        machine().clock().now(), proposeStop ? Focus::SetStop : Focus::Date, this);
    if (dialog.exec() == QDialog::Accepted)
        StartScheduleWorker();
}

void CMainFrame::StartScheduleWorker()
{
    // There is no further attempt, and no message.
    static_cast<void>(SchedTable.StartScheduleWorker());
}

void CMainFrame::OnSecurity()
{
    SecurityDialog dialog(this);
    dialog.m_lock_time = m_document.m_lock_timeout;
    if (dialog.exec() != QDialog::Accepted)
        return;
    m_document.m_lock_timeout = dialog.m_lock_time;
    KillIdleTimers();
}

void CMainFrame::OnMail()
{
    if (!m_leftView) {
        ShowCodedMessage(u"02000042"_s, loadText(text::UnexpectedError), 3, this);
        return;
    }
    DialogPrompts prompts(this);
    auto waiting = std::make_optional<WaitCursor>();
    mailProblemReport(m_leftView->GetSelectedService(), prompts, [&](const QString& proposedName) {
        // All gathering lies before the question.
        waiting.reset();
        auto file = askReportFile(this, proposedName);
        waiting.emplace();
        return file;
    });
}

void CMainFrame::ArmIdleTimer()
{
    m_idleLock->ArmIdleTimer();
}

void CMainFrame::KillIdleTimers()
{
    m_idleLock->KillIdleTimers();
}

void CMainFrame::LockNow()
{
    m_read_only = true;
    LockWorkstationIfSupported();
}

void CMainFrame::OnSystemMonitor()
{
    const QString failure = m_monitor.show();
    if (!failure.isEmpty())
        ShowFrameMessage(failure);
}

void CMainFrame::OnViewToolBar()
{
    m_toolBar->setVisible(m_toolBar->isHidden());
}

void CMainFrame::OnViewStatusBar()
{
    statusBar()->setVisible(statusBar()->isHidden());
    m_commands->action(command::StatusBar)->setChecked(!statusBar()->isHidden());
}

void CMainFrame::OnHelp()
{
    OnHelpFinder();
}

void CMainFrame::OnHelpFinder()
{
    // A modal window leaves only what belongs to itself to the person.
    QWidget* const modal = QApplication::activeModalWidget();
    QWidget* const owner = modal ? modal : this;
    if (m_helpView && m_helpView->parentWidget() != owner)
        delete m_helpView;
    if (!m_helpView)
        m_helpView = new CHelpView(m_helpFile, owner);
    m_helpView->open();
}

void CMainFrame::showTopic(const QString& link)
{
    OnHelpFinder();
    m_helpView->goTo(link);
}

void CMainFrame::OnContextHelp()
{
    QWhatsThis::enterWhatsThisMode();
}

void CMainFrame::OnAbout()
{
    CAboutDlg(m_version, this).exec();
}

void CMainFrame::OnExit()
{
    close();
}

void CMainFrame::OnNewServiceInstalled()
{
    DialogPrompts(this).success(loadText(text::NewServiceInstalled));
}

void CMainFrame::updateCaption(const QString& title)
{
    const QString program = loadText(text::DocumentTemplate).section(u'\n', 0, 0);
    // The toolkit has a use of its own for this mark.
    QString shown = title;
    shown.replace(u"[*]"_s, u"[*][*]"_s);
    setWindowTitle(shown.isEmpty() ? program : shownText(shown) + u" - "_s + program);
}

void CMainFrame::showLockKeys()
{
    const LockKeys keys = machine().session().lockKeys();
    const bool states[] = {keys.caps, keys.num, keys.scroll};
    for (qsizetype i = 0; i < m_lockKeyPanes.size(); ++i)
        m_lockKeyPanes[i]->setEnabled(states[i]);
}

bool CMainFrame::eventFilter(QObject* watched, QEvent* event)
{
    // The link of a command's explanation: its event goes to the window of the menu where it was clicked.
    if (event->type() == QEvent::WhatsThisClicked) {
        showTopic(static_cast<QWhatsThisClickedEvent*>(event)->href());
        return true;
    }
    const QWidget* const modal = QApplication::activeModalWidget();
    if (event->type() != QEvent::KeyPress || !modal || !watched->isWidgetType()
        || static_cast<QKeyEvent*>(event)->key() != Qt::Key_F1
        || !(modal == watched || modal->isAncestorOf(static_cast<QWidget*>(watched)))
        || static_cast<QWidget*>(watched)->window() != modal)
        return QMainWindow::eventFilter(watched, event);
    showTopic(modal->property(HelpTopicProperty).toString());
    return true;
}

bool CMainFrame::event(QEvent* event)
{
    const bool handled = QMainWindow::event(event);
    if (m_commands && (event->type() == QEvent::KeyRelease || event->type() == QEvent::WindowActivate))
        showLockKeys();
    return handled;
}

void CMainFrame::closeEvent(QCloseEvent* event)
{
    DestroyWindow();
    event->accept();
}

void CMainFrame::DestroyWindow()
{
    // The worker may be in a pass: the table waits for it when the frame is destroyed.
    SchedTable.endWorker();
    m_newServiceSubscription.reset();
    if (m_helpView)
        m_helpView->close();
}

} // namespace quoril
