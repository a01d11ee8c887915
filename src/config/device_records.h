#pragma once

#include <QString>

#include <vector>

namespace quoril {

/// One unit of a device.
struct DeviceUnit
{
    bool Present = false;
    /// The unit's index below `container`, -1 while there is none.
    qint32 LineNo = -1;
    QString Class;
    QString Value;
};

/// The slots of a device's units. Memory is taken when the first slot is written: most devices of a machine's
/// services do not exist.
template <int Slots> class UnitTable
{
public:
    static constexpr int size() { return Slots; }

    /// The unit of a slot, 0 to Slots - 1; a new unit as long as nothing was written.
    const DeviceUnit& operator[](int slot) const
    {
        static const DeviceUnit absent;
        return m_units.empty() ? absent : m_units[std::size_t(slot)];
    }
    DeviceUnit& operator[](int slot)
    {
        if (m_units.empty())
            m_units.resize(Slots);
        return m_units[std::size_t(slot)];
    }

private:
    std::vector<DeviceUnit> m_units;
};

/// A device that the device scan found: slot N holds index key N of its `container`.
struct QRAPI_Device
{
    bool Present = false;
    QString Class;
    UnitTable<128> Units;
};

/// A device of the fixed tables. Class is the text that the panel shows for it.
struct DeviceList
{
    bool Present = false;
    QString Class;
    UnitTable<8> Units;
};

} // namespace quoril
