#include "services/installer_command_line.h"

#include "platform/files.h"
#include "platform/machine.h"
#include "platform/processes.h"
#include "resources/resource_module.h"
#include "resources/text_ids.h"
#include "services/user_prompts.h"

#include <QFileInfo>

#include <algorithm>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype LongestCommandLine = 32766;
constexpr InstallOutcome Refusal = {InstallStep::Refused, -1};

/// The text's number of what is wrong with a name or path, 0 for nothing.
quint32 faultOf(QStringView argument)
{
    if (argument.contains(u'"'))
        return text::ArgumentHasQuote;
    if (argument.endsWith(u'\\'))
        return text::ArgumentEndsInBackslash;
    if (std::any_of(argument.begin(), argument.end(), [](QChar unit) { return unit < u' '; }))
        return text::ArgumentHasControl;
    return 0;
}

QStringView withoutQuotes(QStringView path)
{
    const bool isQuoted = path.size() >= 2 && path.startsWith(u'"') && path.endsWith(u'"');
    return isQuoted ? path.sliced(1, path.size() - 2) : path;
}

} // namespace

QString unsafeArgument(const InstallRequest& request)
{
    const struct
    {
        quint32 statement;
        QStringView argument;
    } arguments[] = {
        {text::ServiceNameUnsafe, request.serviceName},
        {text::ConfigurationFileUnsafe, request.configurationFile},
        {text::ExecutablePathUnsafe, withoutQuotes(request.imagePath)},
    };
    qsizetype length = QStringView(u"\"\" --install \"\" \"\"").size();
    for (const auto& [statement, argument] : arguments) {
        if (const quint32 fault = faultOf(argument))
            return loadText(statement).replace(u"%s"_s, loadText(fault));
        length += argument.size();
    }
    return length > LongestCommandLine ? loadText(text::CommandLineTooLong) : QString();
}

InstallerFile findInstallerFile(const QString& named)
{
    Files& files = machine().files();
    const QString name = withoutQuotes(named).toString();
    const auto known = files.hostPath(name);
    const QString host = known ? *known : QFileInfo(name).absoluteFilePath();
    if (QFileInfo(host).isDir())
        return {{}, loadText(text::FileIsFolder).replace(u"%s"_s, name)};
    if (known ? !files.openForReading(name) : !QFileInfo(host).isFile())
        return {{}, loadText(text::DocumentNotFound).replace(u"%s"_s, name)};
    const auto path = files.machinePath(host);
    if (!path)
        return {{}, loadText(text::FileOutsideMachine).replace(u"%s"_s, name)};
    return {*path, {}};
}

InstallOutcome CheckedInstaller::InstallService(const InstallRequest& request, UserPrompts& prompts)
{
    if (const QString refusal = unsafeArgument(request); !refusal.isEmpty()) {
        prompts.message(refusal);
        return Refusal;
    }
    // An update begins with the removal of what is there.
    const Status runs
        = request.isUpdate ? machine().processes().canRun(withoutQuotes(request.imagePath)) : Status();
    if (!runs) {
        prompts.message(withReason(loadText(text::InstallationFailed), runs.errorNumber()));
        return Refusal;
    }
    return ServiceApp::InstallService(request, prompts);
}

} // namespace quoril
