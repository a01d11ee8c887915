#pragma once

#include "formats/error.h"
#include "report/report_stream.h"

#include <QFile>
#include <QString>

#include <vector>

namespace quoril {

/// What the lines of a report end in.
inline constexpr QStringView LineEnd = u"\r\n";

/// Writes units as they stand, 16 bits little-endian each. False unless all of them went out.
bool writeUnits(QIODevice& out, QStringView text);

/// A temporary file of the report: units of 16 bits, little-endian, without a byte-order mark.
class AttachmentFile : public ReportStream
{
public:
    /// Makes the file, readable by nobody but its owner. 80 if anything is there under that name, be it a
    /// link: nothing that somebody else put there is ever written to. Else the error that kept it from being
    /// made.
    Status create(const QString& hostPath);

    void write(QStringView text) override;
    bool writeAll(QIODevice& device) override;

    /// Writes what is left and closes. 112 or 29 if any part of the text could not be written.
    Status close();

private:
    void flush();
    quint32 failureNumber(const QString& hostPath) const;

    QFile m_file;
    std::vector<char16_t> m_pending;
    bool m_failed = false;
};

} // namespace quoril
