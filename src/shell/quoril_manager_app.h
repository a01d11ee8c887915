#pragma once

#include "shell/language_module.h"
#include "shell/system_monitor.h"
#include "shell/version_record.h"

#include <QString>
#include <QStringList>
#include <QTranslator>

#include <memory>

namespace quoril {

class CMainFrame;
class CQuorilManagerDoc;

/// The application object: brings the process up in its fixed order and owns document and frame.
class CQuorilManagerApp
{
public:
    CQuorilManagerApp();
    /// Ends the system monitor that was started from here last, if the window came up.
    virtual ~CQuorilManagerApp();

    /// Loads the language module beside the program, and with it the texts of the toolkit's dialogs, for as
    /// long as the translator lives.
    static LanguageChoice applyLanguage(const QString& programFolder, QTranslator& dialogTexts);

    /// The icon of all programs with windows, and what the wheel does in them. Style and colours are the
    /// desktop's.
    static void prepare();

    /// Brings up the main window; arguments as the process got them, the program first. False ends the
    /// process.
    bool InitInstance(const QStringList& arguments);

    /// Fills m_version from the version block of the file at the host path; all zero if it has none.
    void ReadProgramVersion(const QString& path);

    CMainFrame* mainFrame() const { return m_frame.get(); }
    CQuorilManagerDoc* document() const { return m_document.get(); }
    const VersionRecord& version() const { return m_version; }

protected:
    /// Support for clipboard and drag and drop. Without it the program does not come up.
    virtual bool initCompoundDocuments();

private:
    /// The event loop, that of a modal dialog too, has nothing left to do.
    void OnIdle();
    bool ProcessShellCommand(const QStringList& arguments);
    QString defaultHelpFile() const;

    QString m_programFolder;
    QString m_helpFile;
    QTranslator m_dialogTexts;
    VersionRecord m_version;
    SystemMonitor m_monitor;
    bool m_stopsMonitor = false; ///< the start came to its end
    std::unique_ptr<CQuorilManagerDoc> m_document;
    std::unique_ptr<CMainFrame> m_frame;
};

} // namespace quoril
