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

CQuorilManagerApp::CQuorilManagerApp() : m_program_folder(QApplication::applicationDirPath() + u'/')
{
    Prepare();
}

void CQuorilManagerApp::Prepare()
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
    if (m_stops_monitor)
        m_monitor.StopMonitorAtExit();
}

LanguageChoice CQuorilManagerApp::ApplyLanguage(const QString& programFolder, QTranslator& dialogTexts)
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
    m_help_file = ApplyLanguage(m_program_folder, m_dialog_texts).helpFile;
    if (m_help_file.isEmpty())
        m_help_file = defaultHelpFile();
    QApplication::setApplicationDisplayName({});
    if (!InitCompoundDocuments()) {
        DialogPrompts(nullptr).message(LoadText(text::OleInitFailed));
        return false;
    }
    ReadProgramVersion(arguments.value(0));
    if (!ProcessShellCommand(arguments))
        return false;
    m_frame->show();
    m_frame->repaint();
    m_stops_monitor = true;
    return true;
}

bool CQuorilManagerApp::InitCompoundDocuments()
{
    return QGuiApplication::clipboard() != nullptr;
}

void CQuorilManagerApp::ReadProgramVersion(const QString& path)
{
    const auto fileVersion = machine().systemInfo().fileVersion(path);
    m_version = fileVersion ? VersionRecord::parse(*fileVersion) : VersionRecord();
}

bool CQuorilManagerApp::ProcessShellCommand(const QStringList& arguments)
{
    m_document = std::make_unique<CQuorilManagerDoc>();
    m_frame = std::make_unique<CMainFrame>(*m_document, m_version, m_help_file, m_monitor);
    m_frame->OnCreate();
    const QString file = ParseCommandLine(arguments).fileName;
    if (file.isEmpty()) {
        m_document->OnNewDocument();
    } else if (const Status opened = m_document->OnOpenDocument(file); !opened) {
        const bool isMissing = opened.errorNumber() == error::FileNotFound;
        DialogPrompts(nullptr).message(isMissing ? LoadText(text::DocumentNotFound).replace(u"%s"_s, file)
                                                 : file + u" : "_s + FormatSystemError(opened.errorNumber()));
        return false;
    }
    m_frame->BecomeMainWindow();
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
    return m_program_folder + u"QuorilManager.hlp"_s;
}

} // namespace quoril
