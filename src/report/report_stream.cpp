#include "report/report_stream.h"

#include "report/unit_reader.h"

namespace quoril {

bool ReportStream::writeAll(QIODevice& device)
{
    UnitReader reader(device);
    for (QStringView piece = reader.next(); !piece.isEmpty(); piece = reader.next())
        write(piece);
    return !reader.hasFailed();
}

} // namespace quoril
