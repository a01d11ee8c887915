#include "shell/service_catalogue.h"

#include "config/device_scan.h"
#include "platform/machine_path.h"
#include "platform/registry.h"
#include "services/service_walk.h"
#include "shell/quoril_manager_doc.h"

#include <array>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype NameRoomUnits = 1023;
constexpr qsizetype ValueLimitBytes = 1023;
constexpr qsizetype ParameterLimitBytes = 511;

/// A setting of the record and its place below `Parameters`.
struct Setting
{
    QStringView component;
    QStringView parameter;
    QString ServiceInfo::*field;
};

constexpr std::array<Setting, 4> Settings = {{
    {u"ram", u"size", &ServiceInfo::RamSize},
    {u"cpu", u"ace_enable", &ServiceInfo::AceEnable},
    {u"rom", u"container", &ServiceInfo::RomContainer},
    {u"toy", u"container", &ServiceInfo::ToyContainer},
}};

/// `Value` of a component's parameter, at index 0.
Result<QString> ReadParameterValue(
    const RegistryKey& parameters, QStringView component, QStringView parameter)
{
    const auto key = openPath(
        parameters, component.toString() + u'\\' + parameter.toString() + u"\\0"_s, registryAccess);
    if (!key)
        return key.failure();
    return (*key)->text(u"Value", ParameterLimitBytes);
}

void readHome(const RegistryKey& parameters, ServiceInfo& service)
{
    const auto home = parameters.text(u"Home", ParameterLimitBytes);
    if (!home)
        return;
    service.HomeDir = *home;
    if (home->isEmpty() || !isPathSeparator(home->back()))
        service.HomeDir += u'\\';
}

void readServiceValues(const RegistryKey& services, ServiceInfo& service)
{
    const auto key = services.open(service.Name, registryAccess());
    if (!key)
        return;
    if (const auto path = (*key)->text(u"ImagePath", ValueLimitBytes))
        service.ImagePath = *path;
    if (const auto name = (*key)->text(u"DisplayName", ValueLimitBytes))
        service.DisplayName = *name;
}

ServiceInfo readService(const InstanceVisit& visit, const InstanceParameters& parameters, CatalogueScan scan)
{
    ServiceInfo service;
    service.Name = visit.name;
    service.EmulationType = parameters.emulationType;
    readHome(*parameters.key, service);
    if (const auto log = ReadParameterValue(*parameters.key, u"session", u"log")) {
        service.LogFile = *log;
        MakeLogPathAbsolute(service);
    }
    for (const Setting& setting : Settings) {
        if (const auto value = ReadParameterValue(*parameters.key, setting.component, setting.parameter))
            service.*setting.field = *value;
    }
    if (scan == CatalogueScan::Full) {
        ScanDevices(*parameters.key, service);
        fillFixedDevices(*parameters.key, service);
    }
    readServiceValues(visit.services, service);
    return service;
}

/// The prefix without its last level, ending in a backslash.
QString withoutLastLevel(QString prefix)
{
    prefix.chop(1);
    qsizetype end = prefix.lastIndexOf(u'\\');
    if (end < 0)
        end = prefix.lastIndexOf(u'/');
    if (end >= 0)
        prefix.truncate(end);
    return prefix + u'\\';
}

} // namespace

Status scanInstances(CatalogueScan scan, const std::function<void(const ServiceInfo&)>& add)
{
    return walkInstances({NameRoomUnits, ValueLimitBytes}, [&](const InstanceVisit& visit) {
        if (const auto parameters = openParameters(visit.key, ValueLimitBytes))
            add(readService(visit, *parameters, scan));
        return Walk::Continue;
    });
}

Status ScanServices(CQuorilManagerDoc& document)
{
    return scanInstances(
        CatalogueScan::Full, [&document](const ServiceInfo& service) { document.AddService(service); });
}

void MakeLogPathAbsolute(ServiceInfo& service)
{
    QString& path = service.LogFile;
    const bool relative = driveOf(path).isEmpty() && (path.isEmpty() || !isPathSeparator(path.front()));
    bool oneLevelUp = false;
    if (path.startsWith(u"./") || path.startsWith(u".\\")) {
        path.remove(0, 2);
    } else if (path.startsWith(u"../") || path.startsWith(u"..\\")) {
        path.remove(0, 3);
        oneLevelUp = true;
    }
    if (relative)
        path.prepend(oneLevelUp ? withoutLastLevel(service.HomeDir) : service.HomeDir);
}

} // namespace quoril
