#include "shell/quoril_manager_app.h"

#include "platform/machine.h"
#include "platform/system_info.h"
#include "resources/resource_module.h"
#include "resources/text_ids.h"
#include "services/prompt_dialogs.h"
#include "shell/command_line_info.h"
#include "shell/language_module.h"
#include "shell/main_frame.h"
#include "shell/quoril_manager_doc.h"
#include "shell/wheel_guard_widget.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QIcon>
#include <QLibraryInfo>
#include <QLocale>

namespace quoril {

using namespace Qt::StringLiterals;

CQuorilManagerApp::CQuorilManagerApp() : m_programFolder(QApplication::applicationDirPath() + u'/')
{
    prepare();
}

void CQuorilManagerApp::prepare()
{
#ifndef Q_OS_WIN
    // The desktop's own dialogs may belong to another program, whose input nobody here sees.
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
#endif
    QIcon icon;
    for (const int size : {16, 32, 48, 64, 128, 256})
        icon.addFile(u":/quoril/icons/application-%1.png"_s.arg(size));
    QApplication::setWindowIcon(icon);
    WheelGuard::install();
}

CQuorilManagerApp::~CQuorilManagerApp()
{
    if (m_stopsMonitor)
        m_monitor.StopMonitorAtExit();
}

LanguageChoice CQuorilManagerApp::applyLanguage(const QString& programFolder, QTranslator& dialogTexts)
{
    LanguageChoice language = LoadLanguageModule(programFolder);
    // The dialogs for files and printers come with their own texts.
    if (language.moduleActive
        && dialogTexts.load(
            QLocale(), u"qtbase"_s, u"_"_s, QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&dialogTexts);
    return language;
}

bool CQuorilManagerApp::InitInstance(const QStringList& arguments)
{
    m_helpFile = applyLanguage(m_programFolder, m_dialogTexts).helpFile;
    if (m_helpFile.isEmpty())
        m_helpFile = defaultHelpFile();
    QApplication::setApplicationDisplayName({});
    if (!initCompoundDocuments()) {
        DialogPrompts(nullptr).message(loadText(text::OleInitFailed));
        return false;
    }
    ReadProgramVersion(arguments.value(0));
    if (!ProcessShellCommand(arguments))
        return false;
    m_frame->show();
    m_frame->repaint();
    m_stopsMonitor = true;
    return true;
}

bool CQuorilManagerApp::initCompoundDocuments()
{
    return QGuiApplication::clipboard() != nullptr;
}

void CQuorilManagerApp::ReadProgramVersion(const QString& path)
{
    const auto version = machine().systemInfo().programVersion(path);
    m_version = version ? VersionRecord::parse(*version) : VersionRecord();
}

bool CQuorilManagerApp::ProcessShellCommand(const QStringList& arguments)
{
    m_document = std::make_unique<CQuorilManagerDoc>();
    m_frame = std::make_unique<CMainFrame>(*m_document, m_version, m_helpFile, m_monitor);
    m_frame->OnCreate();
    const QString file = ParseCommandLine(arguments).fileName;
    if (file.isEmpty()) {
        m_document->OnNewDocument();
    } else if (const Status opened = m_document->OnOpenDocument(file); !opened) {
        const bool isMissing = opened.errorNumber() == error::FileNotFound;
        DialogPrompts(nullptr).message(isMissing ? loadText(text::DocumentNotFound).replace(u"%s"_s, file)
                                                 : file + u" : "_s + FormatSystemError(opened.errorNumber()));
        return false;
    }
    m_frame->becomeMainWindow();
    QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock,
        m_frame.get(), [this] { OnIdle(); });
    return true;
}

void CQuorilManagerApp::OnIdle()
{
    m_frame->ArmIdleTimer();
}

QString CQuorilManagerApp::defaultHelpFile() const
{
    return m_programFolder + u"QuorilManager.hlp"_s;
}

} // namespace quoril
