#include "report/unit_reader.h"

#include "platform/files.h"

#include <algorithm>

namespace quoril {

namespace {

constexpr std::size_t PieceUnits = std::size_t{128} * 1024;
static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN);

} // namespace

UnitReader::UnitReader(QIODevice& device) : m_device(device), m_left(bytesToRead(device)), m_units(PieceUnits)
{
}

QStringView UnitReader::next()
{
    char* const data = reinterpret_cast<char*>(m_units.data());
    constexpr qint64 Room = qint64(PieceUnits) * 2;
    qint64 bytes = 0;
    // A device may give less than was asked for, and half a unit at that.
    while (bytes < Room) {
        const qint64 got = m_device.read(data + bytes, std::min(Room - bytes, m_left));
        m_hasFailed = m_hasFailed || got < 0;
        if (got <= 0)
            break;
        bytes += got;
        m_left -= got;
    }
    return {m_units.data(), bytes / 2};
}

} // namespace quoril
