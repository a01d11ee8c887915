#pragma once

#include "report/report_stream.h"
#include "support/utf16.h"

#include <QFile>
#include <QString>

namespace quoril::test {

/// Keeps the text of a section.
class CollectedText : public ReportStream
{
public:
    void write(QStringView part) override { text += part; }
    QString text;
};

/// The text of a file of 16-bit units; none where there is no such file.
inline QString textOfFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? textOf(file.readAll()) : QString();
}

} // namespace quoril::test
