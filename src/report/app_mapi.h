#pragma once

#include "formats/error.h"
#include "report/quoril_mapi_data.h"

#include <QByteArrayView>
#include <QString>

#include <functional>

class QIODevice;

namespace quoril {

class ReportStream;
class UserPrompts;

/// Builds one problem report: its stages gather into temporary files of their own, and SaveReport puts the
/// files after a form. What fails is shown when it happens, and the report goes on without it.
class appMAPI
{
public:
    /// Asks for the report's file: gets the proposed name, gives the host path, or an empty one for Cancel.
    using AskFileName = std::function<QString(const QString& proposedName)>;

    /// The prompts outlive the builder.
    appMAPI(UserPrompts& prompts, AskFileName askFileName);

    // The stages. Each makes its attachment, sets its Ready flag, and gives 0. A temporary file that can't be
    // named or made, or not written to its end, is reported and leaves the flag clear; nothing remains of it,
    // and the result is the error's number.

    quint32 WriteHardwareSection(QuorilMAPIData& data);

    /// 62000, unreported and with nothing made, if the services key can't be opened.
    quint32 WriteRegistrySection(QuorilMAPIData& data);

    /// Takes the last three minutes' first seconds where the span has an end that is 0. Without a name of the
    /// log it is looked for in the configuration file; 1 if it isn't there, or the file can't be made.
    quint32 WriteLogSections(QuorilMAPIData& data);

    /// Asks for the file and writes the report: the form, the attachments that are ready, the configuration
    /// file if wanted. Then removes the attachments and clears their flags. The message of success comes only
    /// when no stage failed and every part was written and the file closed without a failure. A file that is
    /// not chosen or can't be opened leaves the attachments where they are.
    void SaveReport(QuorilMAPIData& data);

    /// Removes the attachments that are ready and clears the flags.
    static void removeAttachments(QuorilMAPIData& data);

    void BuildForm();

    /// Appends the temporary file at the host path; -1, the failure shown, if it could not be read or
    /// written.
    int CopyTempFile(QIODevice* out, const QString& path);

    /// Appends the file at the machine path, a text in the system's own 8-bit encoding; as CopyTempFile.
    int CopyConfigFile(QIODevice* out, const QString& path);

    /// A name in the user's temporary directory: the prefix, six random characters, and a number that grows
    /// with each name of this process. The file is not made. Fails if there is no such directory.
    Result<QString> MakeTempName(const QString& prefix);

    void ShowError(const QString& text);

    QString ErrorText; ///< what was shown last
    QString FormText;

private:
    using Section = std::function<quint32(ReportStream& out)>;

    quint32 writeAttachment(
        const QString& prefix, QString& attachment, bool& isReady, const Section& section);
    quint32 writeLogs(ReportStream& out, QuorilMAPIData& data);
    bool copyParts(QIODevice& out, const QuorilMAPIData& data);
    int copyBlocks(QIODevice& in, const std::function<bool(QByteArrayView)>& write);

    UserPrompts& m_prompts;
    AskFileName m_askFileName;
};

} // namespace quoril
