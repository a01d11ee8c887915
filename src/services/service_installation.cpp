#include "services/service_installation.h"

#include "formats/name_case.h"
#include "platform/files.h"
#include "platform/machine.h"
#include "platform/machine_path.h"
#include "platform/session.h"
#include "resources/resource_module.h"
#include "resources/text_ids.h"
#include "services/service_app.h"
#include "services/service_walk.h"
#include "services/user_prompts.h"

#include <QStringBuilder>
#include <QStringList>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr InstanceLimits WalkLimits = {.nameUnits = 255, .groupBytes = 2047};
constexpr qsizetype ValueBytes = 2047;
constexpr qsizetype ProductNameUnits = 255;
constexpr qsizetype DirectoryUnits = 255;
constexpr int InstalledCode = -1;
constexpr int StoppedWithMessage = -1;

/// The folder of a program, with the backslashes after the drive doubled.
QString doubledDirectory(QStringView path)
{
    QString directory = directoryOf(path).left(DirectoryUnits).toString();
    return driveOf(path) % directory.replace(u"\\"_s, u"\\\\"_s);
}

InstallOutcome stop(InstallStep step, const QString& message, UserPrompts& prompts)
{
    prompts.message(message);
    return {step, StoppedWithMessage};
}

/// What follows the executable's success. Only the success itself is reported.
void announce(const ServiceApp& app, const InstallRequest& request, UserPrompts& prompts)
{
    prompts.success(loadText(request.isUpdate ? text::ServiceUpdated : text::ServiceInstalled));
    machine().session().broadcast(NewServiceInstalledMessage,
        prompts.isWatched() ? HungWindows::AreAwaited : HungWindows::ArePassedOver);
    if (app.BuildDependencyList(request.serviceName) == 0)
        (void)app.SetDependencies(request.serviceName);
}

} // namespace

InstallOutcome ServiceApp::InstallService(const InstallRequest& request, UserPrompts& prompts)
{
    if (request.serviceName.isEmpty() || request.configurationFile.isEmpty())
        return {InstallStep::Arguments, 0};
    if (request.imagePath.isEmpty())
        return stop(InstallStep::ImagePath, loadText(text::ExecutablePathMissing), prompts);
    const bool isQuoted = request.imagePath.startsWith(u'"');
    const QString imagePath = isQuoted ? request.imagePath : u'"' % request.imagePath % u'"';
    if (request.isUpdate && RemoveService(request.serviceName, false, prompts) != 0)
        return stop(InstallStep::Removal, loadText(text::InstallationFailed), prompts);

    const QString ChDirStr = doubledDirectory(QStringView(imagePath).mid(1));
    if (!machine().files().setCurrentDirectory(ChDirStr)) {
        const QString message = loadText(text::DirectoryNotChanged) % loadText(text::DestinationDirectory)
            % u'"' % ChDirStr % u'"';
        return stop(InstallStep::Directory, message, prompts);
    }
    const QString CmdLine
        = imagePath % u" --install \"" % request.serviceName % u"\" \"" % request.configurationFile % u'"';
    const int code = RunProcess(CmdLine, prompts);
    if (code == InstalledCode) {
        announce(*this, request, prompts);
        return {InstallStep::Done, code};
    }
    prompts.message(loadText(text::InstallationFailed) % loadText(text::Reason) % ErrorText(quint32(code)));
    return {InstallStep::Executable, code};
}

int ServiceApp::BuildDependencyList(const QString& serviceName) const
{
    DependencyBuffer& list = dependencies();
    list.clear();
    Result<QStringList> written = QStringList();
    const Status walked = walkInstances(WalkLimits, [&](const InstanceVisit& instance) {
        if (instance.name != serviceName)
            return Walk::Continue;
        written = instance.key.multiString(u"DependOnService", ValueBytes);
        return Walk::Stop;
    });
    if (!walked || !written)
        return -1;
    if (written->isEmpty())
        return 0;
    bool fits = true;
    for (const QString& each : std::as_const(*written)) {
        const QString name = downcase(each);
        if (name != u"tcpip" && name != u"workspace")
            fits = fits && list.append(name);
    }
    if (fits && list.append(u"tcpip"_s))
        return 0;
    list.clear();
    return -1;
}

int ServiceApp::ListProductServices(const QString& productName, QStringList& serviceNames) const
{
    serviceNames.clear();
    const QString product = productName.left(ProductNameUnits).replace(u' ', u'_');
    const Status walked = walkInstances(WalkLimits, [&](const InstanceVisit& instance) {
        const auto parameters = openParameters(instance.key, ValueBytes);
        if (parameters && foldedEquals(parameters->emulationType, product))
            serviceNames.append(instance.name);
        return Walk::Continue;
    });
    return walked ? 0 : -1;
}

} // namespace quoril
