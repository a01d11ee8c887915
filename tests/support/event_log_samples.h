#pragma once

#include "formats/event_record.h"

#include <QBuffer>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <optional>
#include <vector>

namespace quoril::test {

/// What the program prints to standard output; none where it is missing.
inline std::optional<QByteArray> outputOf(const QString& program, const QStringList& arguments)
{
    if (QStandardPaths::findExecutable(program).isEmpty())
        return std::nullopt;
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished() ? std::optional(process.readAllStandardOutput()) : std::nullopt;
}

/// A real log of the folder QUORIL_REAL_DATA, unpacked; empty where there is none.
inline QByteArray realLog(const QString& name)
{
    const QString folder = qEnvironmentVariable("QUORIL_REAL_DATA");
    if (folder.isEmpty())
        return {};
    return outputOf(QStringLiteral("xz"), {QStringLiteral("-dc"), folder + u'/' + name})
        .value_or(QByteArray());
}

/// What an exporting tool prints about the log `bytes`.
inline std::optional<QByteArray> exported(const QString& tool, QStringList arguments, const QByteArray& bytes)
{
    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("log")));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        return std::nullopt;
    file.close();
    return outputOf(tool, arguments << file.fileName());
}

/// All events that a Reader gives from `bytes`; empty where it does not open them.
template <typename Reader> std::vector<EventEntry> readAll(QByteArray bytes, const EventSpan& span = {})
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    std::vector<EventEntry> entries;
    auto reader = Reader::open(buffer);
    if (!reader)
        return entries;
    reader->setSpan(span);
    EventEntry entry;
    while (reader->next(entry))
        entries.push_back(entry);
    return entries;
}

} // namespace quoril::test
