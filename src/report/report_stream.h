#pragma once

#include <QStringView>

namespace quoril {

/// Takes the text of a report section, in order. A failed write is kept by the stream and told by its owner
/// when it closes; what is written after it is dropped.
class ReportStream
{
public:
    virtual ~ReportStream() = default;
    virtual void write(QStringView text) = 0;
};

} // namespace quoril
