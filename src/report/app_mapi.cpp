#include "report/app_mapi.h"

#include "platform/clock.h"
#include "platform/files.h"
#include "platform/host/host_file.h"
#include "platform/machine.h"
#include "report/attachment_file.h"
#include "report/hardware_sections.h"
#include "report/log_sections.h"
#include "report/registry_section.h"
#include "resources/resource_module.h"
#include "resources/text_ids.h"
#include "services/service_walk.h"
#include "services/user_prompts.h"

#include <QDir>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QStringDecoder>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 CopyBytes = qint64{256} * 1024;
constexpr int NameTries = 26;

/// Counts the temporary names of this process.
qint32 TempCounter = 0;

constexpr QStringView Form
    = u"               QUORIL automated problem report.\r\n"
      "The following information is required to ensure that we can understand your problem.\r\n\r\n"
      "Please complete the fields below.\r\n\r\n"
      "Short problem description:\r\n\r\n\r\n"
      "Software configuration used:\r\n"
      "Operating System running on the emulated system:\r\n"
      "Version of Operating System:\r\n"
      "Do you run a cluster (Y/N):\r\n"
      "Do you run TCP/IP (Y/N):\r\n"
      "Do you run DECNet (Y/N):\r\n"
      "Additional software running (such as RDB, DEC Forms.):\r\n\r\n\r\n";

QString sixCharacters()
{
    constexpr QStringView Characters = u"abcdefghijklmnopqrstuvwxyz0123456789";
    QString text;
    for (int i = 0; i < 6; ++i)
        text += Characters[QRandomGenerator::system()->bounded(Characters.size())];
    return text;
}

constexpr QStringView ReportName = u"QuorilMailReport.txt";

/// The file of the report, open for writing; null if it can't be. The proposed name is the program's and not
/// the person's: a link that somebody laid under it in the working folder is not followed.
std::unique_ptr<QFile> openReport(const QString& path)
{
    constexpr QIODevice::OpenMode mode = QIODevice::WriteOnly | QIODevice::Unbuffered;
    auto file = std::make_unique<QFile>(path);
    if (path != ReportName)
        return file->open(mode | QIODevice::Truncate) ? std::move(file) : nullptr;
    if (file->open(mode | QIODevice::NewOnly))
        return file;
    const Result<HostFolder> here = HostFolder::open(u"."_s);
    auto found = here ? openRegularFile({*here, path}, HostOpen::Write)
                      : Result<std::unique_ptr<QFile>>(here.failure());
    return found ? *std::move(found) : nullptr;
}

} // namespace

appMAPI::appMAPI(UserPrompts& prompts, AskFileName askFileName)
    : m_prompts(prompts)
    , m_askFileName(std::move(askFileName))
{
}

void appMAPI::ShowError(const QString& text)
{
    ErrorText = text;
    m_prompts.message(text);
}

Result<QString> appMAPI::MakeTempName(const QString& prefix)
{
    const QString directory = QDir::tempPath();
    ++TempCounter;
    if (!QFileInfo(directory).isDir())
        return Error{error::PathNotFound, directory};
    const QString name = prefix + sixCharacters() + QString::number(TempCounter);
    return QDir::toNativeSeparators(QDir(directory).filePath(name));
}

quint32 appMAPI::writeAttachment(
    const QString& prefix, QString& attachment, bool& isReady, const Section& section)
{
    AttachmentFile file;
    Status made = Error{error::FileExists, {}};
    // A name that is taken is given up for another.
    for (int i = 0; i < NameTries && made.errorNumber() == error::FileExists; ++i) {
        const Result<QString> name = MakeTempName(prefix);
        if (!name) {
            ShowError(loadText(text::TemporaryNotCreated));
            return name.errorNumber();
        }
        attachment = *name;
        made = file.create(attachment);
    }
    if (!made) {
        ShowError(loadText(text::AttachmentNotCreated));
        return made.errorNumber();
    }
    const quint32 result = section(file);
    const Status closed = file.close();
    isReady = closed.ok();
    if (isReady)
        return result;
    QFile::remove(attachment);
    ShowError(loadText(text::AttachmentNotCreated));
    return closed.errorNumber();
}

quint32 appMAPI::WriteHardwareSection(QuorilMAPIData& data)
{
    const HardwareSections wanted{data.ExecutablesWanted, data.ExecutablePath, data.GuiExecutablePath};
    return writeAttachment(
        data.TempPrefix, data.HardwareAttachment, data.HardwareReady, [&wanted](ReportStream& out) {
            writeHardwareSections(out, wanted);
            return 0;
        });
}

quint32 appMAPI::WriteRegistrySection(QuorilMAPIData& data)
{
    const auto services = openServices();
    if (!services)
        return text::RegistryKeyNotRead;
    return writeAttachment(
        data.TempPrefix, data.RegistryAttachment, data.RegistryReady, [&](ReportStream& out) {
            out.write(data.ConfigSummary);
            out.write(u"\r\n-------------------- Service configuration (registry) --------------------");
            writeInstanceKeys(**services, data.ServiceName, out);
            out.write(
                u"-------------------- End of the service configuration (registry) --------------------\r\n"
                "\r\n");
            return 0;
        });
}

quint32 appMAPI::WriteLogSections(QuorilMAPIData& data)
{
    constexpr quint32 notMade = 1;
    const quint32 result = writeAttachment(data.TempPrefix, data.LogAttachment, data.LogReady,
        [&](ReportStream& out) { return writeLogs(out, data); });
    const bool isNamed = !data.LogAttachment.isEmpty();
    // In this stage a file that can't be made has a number of its own.
    return isNamed && !data.LogReady ? notMade : result;
}

quint32 appMAPI::writeLogs(ReportStream& out, QuorilMAPIData& data)
{
    constexpr qint64 DefaultAgeSeconds = 180;
    constexpr qint64 DefaultSpanSeconds = 3;
    if (data.LogFrom == 0 || data.LogTo == 0) {
        data.LogFrom = machine().clock().now() - DefaultAgeSeconds;
        data.LogTo = data.LogFrom + DefaultSpanSeconds;
    }
    out.write(u"-------------------- Windows Application Log --------------------\r\n");
    WriteEventLog(out, u"Application", data.LogFrom, data.LogTo);
    out.write(u"-------------------- End of the Windows Application Log --------------------\r\n\r\n\r\n");
    out.write(u"-------------------- Windows System Log --------------------\r\n");
    WriteEventLog(out, u"System", data.LogFrom, data.LogTo);
    out.write(u"-------------------- End of the Windows System Log --------------------\r\n\r\n");
    if (data.LogFileName.isEmpty() && data.ConfigFileName.isEmpty())
        return 0;
    if (data.LogFileName.isEmpty()) {
        const auto file = machine().files().openForReading(data.ConfigFileName);
        if (!file) {
            ShowError(loadText(text::ConfigurationNotOpened) + u' ' + data.ConfigFileName);
            return 0;
        }
        data.LogFileName = findLogName(**file);
        if (data.LogFileName.isEmpty())
            return 1;
    }
    data.LogFileName = resolveLogName(data.LogFileName, data.ConfigFileName);
    writeEmulatorLog(out, data.LogFileName);
    return 0;
}

void appMAPI::BuildForm()
{
    FormText = Form.toString();
}

void appMAPI::SaveReport(QuorilMAPIData& data)
{
    const QString path = m_askFileName(ReportName.toString());
    if (path.isEmpty())
        return;
    const std::unique_ptr<QFile> file = openReport(path);
    if (!file) {
        ShowError(loadText(text::OutputNotOpened));
        return;
    }
    // What kept a stage from its part has been reported: a report without it is not one that was stored.
    const bool hasStages = ErrorText.isEmpty();
    QFile& out = *file;
    BuildForm();
    const bool hasForm = writeUnits(out, FormText);
    const bool hasParts = copyParts(out, data);
    removeAttachments(data);
    out.close();
    if (!hasParts)
        return;
    const bool isWritten = hasForm && out.error() == QFileDevice::NoError;
    if (isWritten && hasStages)
        m_prompts.success(loadText(text::ReportStored) + u" \""_s + path + u"\"."_s);
    else if (!isWritten)
        ShowError(loadText(text::OutputNotWritten));
}

/// False if any of the parts failed, which was shown then; each is tried.
bool appMAPI::copyParts(QIODevice& out, const QuorilMAPIData& data)
{
    bool isWhole = true;
    if (data.HardwareReady)
        isWhole = CopyTempFile(&out, data.HardwareAttachment) == 0 && isWhole;
    if (data.LogReady)
        isWhole = CopyTempFile(&out, data.LogAttachment) == 0 && isWhole;
    if (data.RegistryReady)
        isWhole = CopyTempFile(&out, data.RegistryAttachment) == 0 && isWhole;
    if (!data.ConfigWanted)
        return isWhole;
    const bool hasBegin
        = writeUnits(out, u"\r\n--------------------- Configuration file --------------------\r\n");
    isWhole = CopyConfigFile(&out, data.ConfigFileName) == 0 && isWhole;
    const bool hasEnd
        = writeUnits(out, u"-------------------- End of Configuration file --------------------\r\n");
    if (isWhole && !(hasBegin && hasEnd))
        ShowError(loadText(text::OutputNotWritten));
    return isWhole && hasBegin && hasEnd;
}

void appMAPI::removeAttachments(QuorilMAPIData& data)
{
    const auto remove = [](const QString& attachment, bool& isReady) {
        if (isReady)
            QFile::remove(attachment);
        isReady = false;
    };
    remove(data.HardwareAttachment, data.HardwareReady);
    remove(data.LogAttachment, data.LogReady);
    remove(data.RegistryAttachment, data.RegistryReady);
    data.ConfigWanted = false;
    data.ExecutablesWanted = false;
}

/// A file that can't be read to its end counts as one that can't be opened.
int appMAPI::copyBlocks(QIODevice& in, const std::function<bool(QByteArrayView)>& write)
{
    QByteArray bytes(CopyBytes, Qt::Uninitialized);
    qint64 got = 0;
    while ((got = in.read(bytes.data(), CopyBytes)) > 0) {
        if (!write(QByteArrayView(bytes.constData(), got))) {
            ShowError(loadText(text::OutputNotWritten));
            return -1;
        }
    }
    if (got == 0)
        return 0;
    ShowError(loadText(text::TemporaryNotOpened));
    return -1;
}

int appMAPI::CopyTempFile(QIODevice* out, const QString& path)
{
    if (!out)
        return -1;
    QFile in(path);
    if (!in.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        ShowError(loadText(text::TemporaryNotOpened));
        return -1;
    }
    // What the host doesn't copy is left for the blocks.
    if (auto* const file = qobject_cast<QFileDevice*>(out))
        copyWithinHost(in, *file, in.size());
    return copyBlocks(
        in, [out](QByteArrayView block) { return out->write(block.data(), block.size()) == block.size(); });
}

int appMAPI::CopyConfigFile(QIODevice* out, const QString& path)
{
    if (!out)
        return -1;
    const auto in = machine().files().openForReading(path);
    if (!in) {
        ShowError(loadText(text::TemporaryNotOpened));
        return -1;
    }
    QStringDecoder decode(QStringDecoder::System);
    return copyBlocks(**in, [&](QByteArrayView block) {
        const QString text = decode(block);
        return writeUnits(*out, text);
    });
}

} // namespace quoril
