#include "config/device_scan.h"

#include "formats/name_case.h"
#include "platform/registry.h"
#include "resources/resource_module.h"
#include "resources/text_ids.h"
#include "services/service_info.h"
#include "services/service_walk.h"

#include <algorithm>
#include <bitset>
#include <optional>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype NameRoomUnits = 1023;
constexpr qsizetype TextLimitBytes = 511;
constexpr int IndexCount = 128;

/// The components that the fixed tables hold.
constexpr QStringView known_id[]
    = {u"pua", u"pub", u"dua", u"dub", u"pka_0", u"pka_1", u"pka_2", u"pka_3", u"pka_4", u"pka_5", u"pka_6",
        u"pka_7", u"pkb_0", u"pkb_1", u"pkb_2", u"pkb_3", u"pkb_4", u"pkb_5", u"pkb_6", u"pkb_7"};

/// A class of SCSI and storage units, with the text that it is shown by.
struct DeviceClass
{
    QStringView name;
    quint32 textId;
};

constexpr DeviceClass DeviceClasses[] = {
    {u"virtual_scsi_disk", text::VirtualScsiDisk},
    {u"physical_scsi_device", text::PhysicalScsiDisk},
    {u"floppy_scsi_device", text::ScsiFloppy},
    {u"hsd50", text::ScsiController},
    {u"hsj50", text::ScsiController},
    {u"kdb50", text::ScsiController},
    {u"kdm70", text::ScsiController},
};

bool isKnown(const QString& name)
{
    return std::any_of(std::begin(known_id), std::end(known_id),
        [&name](QStringView known) { return foldedEquals(name, known); });
}

/// What the panel shows in brackets for a class of SCSI devices: what its text has in brackets, and the class
/// itself where there is nothing.
QString scsiClassText(const QString& name)
{
    const auto found = std::find_if(std::begin(DeviceClasses), std::end(DeviceClasses),
        [&name](const DeviceClass& known) { return known.name == name; });
    if (found == std::end(DeviceClasses))
        return name;
    const QString text = loadText(found->textId);
    const qsizetype open = text.indexOf(u'(');
    const qsizetype close = text.lastIndexOf(u')');
    return open < 0 || close < open ? name : text.sliced(open + 1, close - open - 1);
}

/// A component that is there: its class if that can be read, and its units if it has any.
struct Component
{
    std::optional<QString> deviceClass;
    RegistryKeyHandle container;
};

std::optional<Component> openComponent(const RegistryKey& parameters, QStringView name)
{
    const auto key = parameters.open(name, registryAccess());
    if (!key)
        return std::nullopt;
    Component component;
    if (auto deviceClass = (*key)->text(u"Class", TextLimitBytes))
        component.deviceClass = *std::move(deviceClass);
    if (auto container = (*key)->open(u"container", registryAccess()))
        component.container = *std::move(container);
    return component;
}

/// The indexes for which the container may have a key. Most containers have a few, so looking at what is
/// there costs less than trying every index; where not all of it can be seen, every index is tried.
std::bitset<IndexCount> unitIndexes(const RegistryKey& container)
{
    std::bitset<IndexCount> found;
    for (quint32 place = 0;; ++place) {
        const auto name = container.subkeyName(place, NameRoomUnits);
        if (name.errorNumber() == error::MoreData)
            continue;
        if (!name)
            return name.errorNumber() == error::NoMoreItems ? found : found.set();
        bool isNumber = false;
        const uint index = name->toUInt(&isNumber);
        if (isNumber && index < IndexCount && *name == QString::number(index))
            found.set(index);
    }
}

/// The unit at an index of a container. Without a `Value` it is not present, but keeps its class; without a
/// `Class` it is a new unit.
DeviceUnit readUnit(const RegistryKey& container, int index)
{
    DeviceUnit unit;
    const auto key = container.open(QString::number(index), registryAccess());
    if (!key)
        return unit;
    auto unitClass = (*key)->text(u"Class", TextLimitBytes);
    if (!unitClass)
        return unit;
    unit.Class = *std::move(unitClass);
    if (auto value = (*key)->text(u"Value", TextLimitBytes)) {
        unit.Present = true;
        unit.LineNo = index;
        unit.Value = *std::move(value);
    }
    return unit;
}

void fillScsiDevice(const RegistryKey& parameters, QStringView name, DeviceList& device)
{
    const auto component = openComponent(parameters, name);
    if (!component)
        return;
    device.Present = true;
    device.Class = scsiClassText(component->deviceClass.value_or(QString()));
    if (!component->container)
        return;
    const auto indexes = unitIndexes(*component->container);
    int slot = 0;
    for (int index = 0; index < IndexCount && slot < device.Units.size(); ++index) {
        if (!indexes[std::size_t(index)])
            continue;
        if (DeviceUnit unit = readUnit(*component->container, index); unit.Present)
            device.Units[slot++] = std::move(unit);
    }
}

void fillDevice(const RegistryKey& parameters, QStringView name, DeviceList& device)
{
    const auto component = openComponent(parameters, name);
    if (!component)
        return;
    device.Present = true;
    device.Class = component->deviceClass.value_or(QString());
    if (!component->container)
        return;
    const auto indexes = unitIndexes(*component->container);
    for (int slot = 0; slot < device.Units.size(); ++slot) {
        if (!indexes[std::size_t(slot)])
            continue;
        if (DeviceUnit unit = readUnit(*component->container, slot); unit.Present)
            device.Units[slot] = std::move(unit);
    }
}

} // namespace

void ScanDevices(const RegistryKey& parameters, ServiceInfo& service)
{
    for (quint32 index = 0;; ++index) {
        const auto name = parameters.subkeyName(index, NameRoomUnits);
        if (!name)
            return;
        if (isKnown(*name))
            continue;
        auto component = openComponent(parameters, *name);
        if (!component || !component->deviceClass || !component->container)
            continue;
        QRAPI_Device device;
        device.Present = true;
        device.Class = *std::move(component->deviceClass);
        bool anyUnit = false;
        const auto indexes = unitIndexes(*component->container);
        for (int slot = 0; slot < device.Units.size(); ++slot) {
            if (!indexes[std::size_t(slot)])
                continue;
            DeviceUnit unit = readUnit(*component->container, slot);
            anyUnit = anyUnit || unit.Present;
            if (!unit.Class.isEmpty() || unit.Present)
                device.Units[slot] = std::move(unit);
        }
        if (anyUnit)
            service.m_devices->push_back(std::move(device));
    }
}

void fillFixedDevices(const RegistryKey& parameters, ServiceInfo& service)
{
    for (int number = 0; number < ServiceInfo::FixedTableSize; ++number) {
        fillScsiDevice(parameters, u"pka_"_s + QString::number(number), service.pka[std::size_t(number)]);
        fillScsiDevice(parameters, u"pkb_"_s + QString::number(number), service.pkb[std::size_t(number)]);
    }
    fillDevice(parameters, u"dua", service.dua);
    fillDevice(parameters, u"dub", service.dub);
    fillDevice(parameters, u"pua", service.pua);
    fillDevice(parameters, u"pub", service.pub);
}

} // namespace quoril
