#include "emulator.h"

#include "formats/name_case.h"
#include "platform/files.h"
#include "platform/machine.h"
#include "platform/registry.h"
#include "platform/services.h"
#include "platform/terminal.h"

#include <QMap>

namespace quoril::emulator {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 MaximumConfigurationBytes = 1 << 20;
constexpr QStringView Group = u"TargetPlatformEmulator";
constexpr quint32 InstalledCode = 0xFFFFFFFF;

/// A parameter of a component: "session.log = ceres.log".
struct Setting
{
    QString component;
    QString parameter;
    QString value;
};

struct Configuration
{
    QMap<QString, QString> general; // the keys without a component, in lower case
    QList<Setting> settings;
};

QString unquoted(QString text)
{
    text = text.trimmed();
    const bool isQuoted = text.size() >= 2 && text.startsWith(u'"') && text.endsWith(u'"');
    return isQuoted ? text.mid(1, text.size() - 2) : text;
}

Result<Configuration> parse(const QString& text)
{
    Configuration configuration;
    int number = 0;
    for (QString line : text.split(u'\n')) {
        ++number;
        line = line.trimmed();
        if (line.isEmpty() || line.startsWith(u'#'))
            continue;
        const qsizetype sign = line.indexOf(u'=');
        const QString key = line.left(qMax<qsizetype>(0, sign)).trimmed();
        if (sign < 0 || key.isEmpty())
            return Error{error::InvalidParameter, u"line %1: %2"_s.arg(number).arg(line)};
        const QString value = unquoted(line.mid(sign + 1));
        const qsizetype dot = key.indexOf(u'.');
        if (dot > 0)
            configuration.settings.append({key.left(dot), key.mid(dot + 1), value});
        else
            configuration.general.insert(downcase(key), value);
    }
    return configuration;
}

Result<Configuration> readConfiguration(Machine& machine, QStringView path)
{
    const auto file = machine.files().openForReading(path);
    if (!file)
        return file.failure();
    return parse(QString::fromUtf8((*file)->read(MaximumConfigurationBytes)));
}

quint32 startTypeOf(const QString& word)
{
    if (foldedEquals(word, u"automatic"))
        return start_type::Automatic;
    return foldedEquals(word, u"disabled") ? start_type::Disabled : start_type::Manual;
}

Status writeSetting(RegistryKey& parameters, const Setting& setting)
{
    const auto component = parameters.create(setting.component, key_access::AllAccess);
    if (!component)
        return component.failure();
    if (!(*component)->value(u"Class", 4096))
        if (Status status = (*component)->setText(u"Class", setting.component); !status)
            return status;
    if (foldedEquals(setting.parameter, u"class"))
        return (*component)->setText(u"Class", setting.value);
    const auto parameter = (*component)->create(setting.parameter, key_access::AllAccess);
    if (!parameter)
        return parameter.failure();
    const auto unit = (*parameter)->create(u"0", key_access::AllAccess);
    return unit ? (*unit)->setText(u"Value", setting.value) : Status(unit.failure());
}

Status writeParameters(Machine& machine, QStringView name, const Configuration& configuration)
{
    const auto root = machine.registry().localMachine();
    if (!root)
        return root.failure();
    const auto service = openPath(
        **root, u"SYSTEM\\CurrentControlSet\\Services\\"_s + name.toString(), key_access::AllAccess);
    if (!service)
        return service.failure();
    const auto parameters = (*service)->create(u"Parameters", key_access::AllAccess);
    if (!parameters)
        return parameters.failure();
    const QString type = configuration.general.value(u"type"_s, u"quoril_32"_s);
    if (Status status = (*parameters)->setText(Group, type); !status)
        return status;
    if (configuration.general.contains(u"home"_s))
        if (Status status = (*parameters)->setText(u"Home", configuration.general[u"home"_s]); !status)
            return status;
    for (const Setting& setting : configuration.settings)
        if (Status status = writeSetting(**parameters, setting); !status)
            return status;
    return {};
}

} // namespace

Status install(Machine& machine, QStringView name, QStringView configurationPath, const QString& program)
{
    const Result<Configuration> configuration = readConfiguration(machine, configurationPath);
    if (!configuration)
        return configuration.failure();
    const QMap<QString, QString>& general = configuration->general;
    NewService service;
    service.name = name.toString();
    service.displayName = general.value(u"display-name"_s);
    service.binaryPath = u'"' + program + u'"';
    if (const QString options = general.value(u"options"_s); !options.isEmpty())
        service.binaryPath += u' ' + options;
    service.loadOrderGroup = Group.toString();
    service.startType = startTypeOf(general.value(u"start"_s));
    for (const QString& each : general.value(u"depends"_s).split(u','))
        if (!each.trimmed().isEmpty())
            service.dependencies.append(each.trimmed());
    const auto manager = machine.services().openManager(service_access::ManagerGenericAll);
    if (!manager)
        return manager.failure();
    if (Status status = (*manager)->createService(service); !status)
        return status;
    Status written = writeParameters(machine, name, *configuration);
    // A service without its settings would be listed and could not run.
    if (!written)
        if (const auto half = (*manager)->openService(name, service_access::Delete))
            (void)(*half)->markForDelete().ok();
    return written;
}

quint32 installByArguments(Machine& machine, const QStringList& arguments, const QString& program)
{
    if (arguments.size() != 3) {
        say(u"usage: quoril-emulator --install NAME CONFIG"_s);
        return error::InvalidParameter;
    }
    if (program.isEmpty()) {
        say(u"quoril-emulator has to be run from a folder of the machine; this copy is outside of it."_s);
        return error::PathNotFound;
    }
    const Status status = install(machine, arguments[1], arguments[2], program);
    if (status)
        return InstalledCode;
    say(u"%1 can't be installed: error %2 %3"_s.arg(arguments[1])
            .arg(status.errorNumber())
            .arg(status.failure().detail));
    return status.errorNumber();
}

} // namespace quoril::emulator
