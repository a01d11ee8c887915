#pragma once

#include <QStringView>

#include <vector>

class QIODevice;

namespace quoril {

/// Reads a device of 16-bit little-endian units in large pieces. An odd byte at the end is dropped, and a
/// failure ends the pieces.
class UnitReader
{
public:
    /// The device outlives the reader.
    explicit UnitReader(QIODevice& device);

    /// The next piece, valid until the next call; empty at the end.
    QStringView next();
    /// Whether the device failed before its end.
    bool hasFailed() const { return m_hasFailed; }

private:
    QIODevice& m_device;
    qint64 m_left; ///< bytes
    std::vector<char16_t> m_units;
    bool m_hasFailed = false;
};

} // namespace quoril
