#pragma once

#include <QStringView>

class QIODevice;

namespace quoril {

/// Takes the text of a report section, in order. A failed write is kept by the stream and reported by its
/// owner when it closes; what is written after it is dropped.
class ReportStream
{
public:
    virtual ~ReportStream() = default;
    virtual void write(QStringView text) = 0;
    /// The rest of a device of 16-bit little-endian units, as UnitReader reads it. False if the device failed
    /// before its end.
    virtual bool writeAll(QIODevice& device);
};

} // namespace quoril
