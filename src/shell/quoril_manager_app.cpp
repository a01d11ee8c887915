#include "shell/quoril_manager_app.h"

#include "platform/machine.h"
#include "platform/system_info.h"
#include "resources/resource_module.h"
#include "resources/text_ids.h"
#include "services/prompt_dialogs.h"
#include "shell/language_module.h"
#include "shell/main_frame.h"
#include "shell/quoril_manager_doc.h"
#include "shell/system_monitor.h"
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
    QIcon icon;
    for (const int size : {16, 32, 48, 64, 128, 256})
        icon.addFile(u":/quoril/icons/application-%1.png"_s.arg(size));
    QApplication::setWindowIcon(icon);
    WheelGuard::install();
}

CQuorilManagerApp::~CQuorilManagerApp() = default;

bool CQuorilManagerApp::InitInstance(const QStringList& arguments)
{
    const LanguageChoice language = LoadLanguageModule(m_program_folder);
    // The dialogs for files and printers come with their own texts.
    if (language.moduleActive
        && m_dialog_texts.load(
            QLocale(), u"qtbase"_s, u"_"_s, QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&m_dialog_texts);
    m_help_file = language.helpFile;
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
    qAddPostRoutine(StopMonitorAtExit);
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
    m_frame = std::make_unique<CMainFrame>(*m_document, m_version, m_help_file);
    if (!m_frame->OnCreate())
        return false;
    const auto file = std::find_if(arguments.begin() + qMin<qsizetype>(1, arguments.size()), arguments.end(),
        [](const QString& argument) { return !argument.startsWith(u'-'); });
    if (file == arguments.end()) {
        m_document->OnNewDocument();
    } else if (!m_document->OnOpenDocument(*file)) {
        DialogPrompts(nullptr).message(LoadText(text::DocumentNotFound).replace(u"%s"_s, *file));
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
