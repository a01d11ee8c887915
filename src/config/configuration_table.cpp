#include "config/configuration_table.h"

#include "resources/resource_module.h"
#include "resources/text_ids.h"
#include "services/service_info.h"

#include <span>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr PanelColour RowColour = 0xE6FFFF;

/// A fixed setting and whether its row stands without a value too.
struct FixedRow
{
    quint32 textId;
    QString ServiceInfo::*field;
    bool always;
};

constexpr FixedRow FixedRows[] = {
    {text::EmulationType, &ServiceInfo::EmulationType, true},
    {text::HomeDirectory, &ServiceInfo::HomeDir, true},
    {text::AdvancedCpuMode, &ServiceInfo::AceEnable, false},
    {text::RamSize, &ServiceInfo::RamSize, false},
    {text::Rom, &ServiceInfo::RomContainer, false},
    {text::Toy, &ServiceInfo::ToyContainer, false},
};

QString twoDigits(int number)
{
    return QString::number(number).rightJustified(2, u'0');
}

void addScsiRows(PanelTable& table, std::span<const DeviceList> devices, QStringView prefix)
{
    for (std::size_t index = 0; index < devices.size(); ++index) {
        const DeviceList& device = devices[index];
        if (!device.Present)
            continue;
        const QString start = loadText(text::ScsiDevice) + u" ("_s + device.Class + u"):  "_s;
        const QString base = prefix.toString() + QString::number(index);
        bool anyUnit = false;
        for (int slot = 0; slot < device.Units.size(); ++slot) {
            const DeviceUnit& unit = device.Units[slot];
            if (!unit.Present)
                continue;
            anyUnit = true;
            const bool numbered = index != 0 || unit.LineNo != 0;
            table.addRow(
                {start + base + (numbered ? twoDigits(unit.LineNo) : QString()), unit.Value}, RowColour);
        }
        if (!anyUnit)
            table.addRow({start + base + (index != 0 ? u"00"_s : QString()), QString()}, RowColour);
    }
}

void addUnitRows(PanelTable& table, const DeviceList& device, quint32 wordId, QStringView name)
{
    if (!device.Present)
        return;
    for (int slot = 0; slot < device.Units.size(); ++slot) {
        if (device.Units[slot].Present)
            table.addRow(
                {loadText(wordId) + u' ' + name.toString() + QString::number(slot), device.Units[slot].Value},
                RowColour);
    }
}

} // namespace

PanelTable buildConfigurationTable(const ServiceInfo& service)
{
    PanelTable table({{loadText(text::ColumnComponent), 5, 3}, {loadText(text::ColumnValue), 5, 2}});
    for (const FixedRow& row : FixedRows) {
        const QString& value = service.*row.field;
        if (row.always || !value.isEmpty())
            table.addRow({loadText(row.textId), value}, RowColour);
    }
    addScsiRows(table, service.pka, u"DKA");
    addScsiRows(table, service.pkb, u"DKB");
    addUnitRows(table, service.dua, text::MscpDevice, u"DUA");
    addUnitRows(table, service.dub, text::MscpDevice, u"DUB");
    addUnitRows(table, service.pua, text::Device, u"PUA");
    addUnitRows(table, service.pub, text::Device, u"PUB");
    return table;
}

} // namespace quoril
