#include "platform/tree/tree_service_database.h"

#include "formats/name_case.h"
#include "platform/host/host_command.h"
#include "platform/machine_path.h"
#include "platform/tree/tree_machine.h"
#include "platform/tree/tree_service_state.h"

#include <QSet>
#include <QtEndian>

#include <algorithm>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype MaximumValueBytes = 65536;
constexpr qsizetype MaximumNameUnits = 256;
constexpr quint32 OwnProcess = 0x10;
constexpr quint32 AnyProcess = 0x30;
constexpr quint32 DriverTypes = 0x3; // of the kernel and of file systems
constexpr quint32 ErrorNormal = 1;
constexpr QStringView ServicesPath = u"CurrentControlSet\\Services";

bool isValidServiceName(QStringView name)
{
    return !name.isEmpty() && name.size() <= MaximumNameUnits && !name.contains(u'\\') && !name.contains(u'/')
        && !name.contains(QChar(0));
}

Result<RegistryKeyHandle> servicesKey(TreeRegistry& registry, quint32 access)
{
    return openPath(*registry.system(), ServicesPath, access);
}

/// The key of a service; a key without a type is none.
Result<RegistryKeyHandle> serviceKey(TreeRegistry& registry, QStringView name, quint32 access)
{
    if (!isValidServiceName(name))
        return Error{error::InvalidName, name.toString()};
    const Result<RegistryKeyHandle> services = servicesKey(registry, access | key_access::QueryValue);
    if (!services)
        return services.failure();
    Result<RegistryKeyHandle> key = (*services)->open(name, access | key_access::QueryValue);
    if (key.errorNumber() == error::FileNotFound || (key && !(*key)->value(u"Type", MaximumValueBytes)))
        return Error{error::ServiceDoesNotExist, name.toString()};
    return key;
}

quint32 numberOf(const RegistryKey& key, QStringView name, quint32 without)
{
    const Result<RegistryValue> value = key.value(name, MaximumValueBytes);
    return value && value->data.size() == 4 ? qFromLittleEndian<quint32>(value->data.constData()) : without;
}

QString textOf(const RegistryKey& key, QStringView name)
{
    const Result<QString> text = key.text(name, MaximumValueBytes);
    return text ? *text : QString();
}

QStringList textsOf(const RegistryKey& key, QStringView name)
{
    const Result<QStringList> texts = key.multiString(name, MaximumValueBytes);
    return texts ? *texts : QStringList();
}

Status setList(RegistryKey& key, QStringView name, const QStringList& texts)
{
    if (!texts.isEmpty())
        return key.setMultiString(name, texts);
    Status status = key.removeValue(name);
    return status.errorNumber() == error::FileNotFound ? Status() : status;
}

/// The dependencies as they are stored: names, and apart from them the groups, which are marked with a plus.
Status setDependencies(RegistryKey& key, const QStringList& dependencies)
{
    QStringList names;
    QStringList groups;
    for (const QString& each : dependencies) {
        if (each.startsWith(u'+'))
            groups.append(each.mid(1));
        else if (!each.isEmpty())
            names.append(each);
    }
    if (Status status = setList(key, u"DependOnService", names); !status)
        return status;
    return setList(key, u"DependOnGroup", groups);
}

QStringList storedNames(TreeRegistry& registry)
{
    QStringList names;
    const auto services = servicesKey(registry, key_access::Read);
    for (quint32 i = 0; services; ++i) {
        const Result<QString> each = (*services)->subkeyName(i, MaximumNameUnits);
        if (each)
            names.append(*each);
        else if (each.errorNumber() != error::MoreData)
            break;
    }
    return names;
}

/// The first failure of a series of steps; what follows it is not done.
class Steps
{
public:
    template <typename Step> Steps& then(bool wanted, Step step)
    {
        if (wanted && status)
            status = step();
        return *this;
    }

    Status status;
};

Status applyChange(RegistryKey& key, const ServiceConfigChange& change)
{
    const auto number
        = [&](QStringView name, quint32 value) { return [=, &key] { return key.setDWord(name, value); }; };
    return Steps()
        .then(change.serviceType != ServiceNoChange, number(u"Type", change.serviceType))
        .then(change.startType != ServiceNoChange, number(u"Start", change.startType))
        .then(change.errorControl != ServiceNoChange, number(u"ErrorControl", change.errorControl))
        .then(change.binaryPath.has_value(),
            [&] { return key.setText(u"ImagePath", *change.binaryPath, value_type::ExpandString); })
        .then(change.dependencies.has_value(), [&] { return setDependencies(key, *change.dependencies); })
        .then(
            change.displayName.has_value(), [&] { return key.setText(u"DisplayName", *change.displayName); })
        .status;
}

/// The path with a folder that is counted from the system's one, "System32\x.exe", in full.
QString fromSystemRoot(const QString& commandLine)
{
    const qsizetype begin = commandLine.startsWith(u'"') ? 1 : 0;
    const QStringView path = QStringView(commandLine).mid(begin);
    // The forms of the system's own names, which only a service's path has.
    constexpr QStringView root = u"\\SystemRoot\\";
    constexpr QStringView device = u"\\??\\";
    if (path.startsWith(root, Qt::CaseInsensitive))
        return commandLine.first(begin) + u"C:\\Windows\\"_s + path.mid(root.size()).toString();
    if (path.startsWith(device))
        return commandLine.first(begin) + path.mid(device.size()).toString();
    const qsizetype separator = std::find_if(path.begin(), path.end(), isPathSeparator) - path.begin();
    const qsizetype colon = path.indexOf(u':');
    const qsizetype blank = path.indexOf(u' ');
    const bool isRelative = separator > 0 && separator < path.size() && (colon < 0 || colon > separator)
        && (begin == 1 || blank < 0 || blank > separator);
    return isRelative ? commandLine.first(begin) + u"C:\\Windows\\"_s + path.toString() : commandLine;
}

} // namespace

Status TreeServiceDatabase::check(QStringView name) const
{
    const auto key = serviceKey(m_machine.registry(), name, key_access::QueryValue);
    return key ? Status() : Status(key.failure());
}

QString TreeServiceDatabase::storedName(QStringView name) const
{
    for (const QString& each : storedNames(m_machine.registry()))
        if (foldedEquals(each, name))
            return each;
    return name.toString();
}

QStringList TreeServiceDatabase::dependents(QStringView name) const
{
    QStringList names;
    const auto services = servicesKey(m_machine.registry(), key_access::Read);
    if (!services)
        return names;
    for (const QString& each : storedNames(m_machine.registry())) {
        const auto key = (*services)->open(each, key_access::QueryValue);
        const QStringList needed = key ? textsOf(**key, u"DependOnService") : QStringList();
        if (std::any_of(
                needed.begin(), needed.end(), [&](const QString& one) { return foldedEquals(one, name); }))
            names.append(each);
    }
    return names;
}

QStringList TreeServiceDatabase::members(QStringView group) const
{
    QStringList names;
    const auto services = servicesKey(m_machine.registry(), key_access::Read);
    if (!services)
        return names;
    for (const QString& each : storedNames(m_machine.registry())) {
        const auto key = (*services)->open(each, key_access::QueryValue);
        if (key && foldedEquals(textOf(**key, u"Group"), group.mid(1)) && check(each))
            names.append(each);
    }
    return names;
}

bool TreeServiceDatabase::isSystemDriver(QStringView name) const
{
    const auto key = serviceKey(m_machine.registry(), name, key_access::QueryValue);
    return key && numberOf(**key, u"Type", 0) & DriverTypes
        && numberOf(**key, u"Start", start_type::Disabled) <= start_type::Automatic;
}

bool TreeServiceDatabase::needsItself(QStringView name, const QStringList& dependencies) const
{
    QStringList toVisit = dependencies;
    QSet<QString> met; // in upper case
    while (!toVisit.isEmpty()) {
        const QString each = toVisit.takeLast();
        if (foldedEquals(each, name))
            return true;
        if (met.contains(upcase(each)))
            continue;
        met.insert(upcase(each));
        if (each.startsWith(u'+'))
            toVisit += members(each);
        else if (const Result<ServiceConfig> next = config(each))
            toVisit += next->dependencies;
    }
    return false;
}

Result<ServiceConfig> TreeServiceDatabase::config(QStringView name) const
{
    const auto opened = serviceKey(m_machine.registry(), name, key_access::QueryValue);
    if (!opened)
        return opened.failure();
    const RegistryKey& key = **opened;
    ServiceConfig config;
    config.serviceType = numberOf(key, u"Type", 0);
    config.startType = numberOf(key, u"Start", start_type::Disabled);
    config.errorControl = numberOf(key, u"ErrorControl", 0);
    config.binaryPath = textOf(key, u"ImagePath");
    config.loadOrderGroup = textOf(key, u"Group");
    config.dependencies = textsOf(key, u"DependOnService");
    for (const QString& group : textsOf(key, u"DependOnGroup"))
        config.dependencies.append(u'+' + group);
    config.displayName = textOf(key, u"DisplayName");
    if (config.displayName.isEmpty())
        config.displayName = name.toString();
    return config;
}

Status TreeServiceDatabase::change(QStringView name, const ServiceConfigChange& change)
{
    const auto transaction = m_machine.registry().beginTransaction(u"SYSTEM");
    if (!transaction)
        return transaction.failure();
    const auto key = serviceKey(m_machine.registry(), name, key_access::SetValue);
    if (!key)
        return key.failure();
    if (isMarkedForDelete(name))
        return Error{error::ServiceMarkedForDelete, {}};
    if (change.dependencies && needsItself(name, *change.dependencies))
        return Error{error::CircularDependency, name.toString()};
    if (Status status = applyChange(**key, change); !status)
        return status;
    return (*transaction)->commit();
}

Status TreeServiceDatabase::create(const NewService& service)
{
    if (!isValidServiceName(service.name))
        return Error{error::InvalidName, service.name};
    if (service.binaryPath.isEmpty() || service.startType > start_type::Disabled)
        return Error{error::InvalidParameter, service.name};
    const auto transaction = m_machine.registry().beginTransaction(u"SYSTEM");
    if (!transaction)
        return transaction.failure();
    if (check(service.name))
        return Error{
            isMarkedForDelete(service.name) ? error::ServiceMarkedForDelete : error::ServiceExists, {}};
    if (needsItself(service.name, service.dependencies))
        return Error{error::CircularDependency, service.name};
    const auto services = servicesKey(m_machine.registry(), key_access::CreateSubKey | key_access::SetValue);
    if (!services)
        return services.failure();
    const auto key = (*services)->create(service.name, key_access::SetValue | key_access::QueryValue);
    if (!key)
        return key.failure();
    const ServiceConfigChange values{OwnProcess, service.startType, ErrorNormal, service.binaryPath,
        service.dependencies, service.displayName.isEmpty() ? service.name : service.displayName};
    const Status status = Steps()
                              .then(true, [&] { return applyChange(**key, values); })
                              .then(true, [&] { return (*key)->setText(u"ObjectName", u"LocalSystem"); })
                              .then(!service.loadOrderGroup.isEmpty(),
                                  [&] { return (*key)->setText(u"Group", service.loadOrderGroup); })
                              .status;
    return status ? (*transaction)->commit() : status;
}

Result<bool> TreeServiceDatabase::deleteMark(QStringView name) const
{
    const auto key = serviceKey(m_machine.registry(), name, key_access::QueryValue);
    return key ? numberOf(**key, u"DeleteFlag", 0) != 0 : Result<bool>(key.failure());
}

bool TreeServiceDatabase::isMarkedForDelete(QStringView name) const
{
    const Result<bool> mark = deleteMark(name);
    return mark && *mark;
}

Status TreeServiceDatabase::markForDelete(QStringView name)
{
    const auto transaction = m_machine.registry().beginTransaction(u"SYSTEM");
    if (!transaction)
        return transaction.failure();
    const auto key = serviceKey(m_machine.registry(), name, key_access::SetValue);
    if (!key)
        return key.failure();
    if (numberOf(**key, u"DeleteFlag", 0) != 0)
        return Error{error::ServiceMarkedForDelete, {}};
    if (Status status = (*key)->setDWord(u"DeleteFlag", 1); !status)
        return status;
    return (*transaction)->commit();
}

void TreeServiceDatabase::removeIfMarked(QStringView name, const ServiceFolder& folder)
{
    if (!isMarkedForDelete(name))
        return;
    folder.remove();
    // Where it can't be removed it stays marked, and the next who opens it tries again.
    if (const auto services = servicesKey(m_machine.registry(), key_access::AllAccess))
        (void)(*services)->removeTree(name).ok();
}

Result<TreeProcesses::Program> TreeServiceDatabase::program(const ServiceConfig& config) const
{
    const QString line = fromSystemRoot(expandMachineVariables(config.binaryPath.trimmed()));
    // The service manager starts them all, from its own folder and no caller's.
    Result<TreeProcesses::Program> found = m_machine.processes().findProgram(line, u"C:\\Windows\\System32");
    if (found && ((config.serviceType & AnyProcess) == 0 || !isHostProgram(found->hostPath)))
        return Error{error::BadExeFormat, line};
    return found;
}

} // namespace quoril
