#pragma once

#include "report/report_stream.h"

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

/// The text as a file of 16-bit units, and back.
inline QByteArray units(QStringView text)
{
    return QByteArray(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
}
inline QString textOf(const QString& path)
{
    QFile file(path);
    const QByteArray bytes = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    return QString::fromUtf16(reinterpret_cast<const char16_t*>(bytes.constData()), bytes.size() / 2);
}

} // namespace quoril::test
