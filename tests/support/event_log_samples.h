#pragma once

#include "formats/event_record.h"

#include <QBuffer>
#include <QStringList>

#include <vector>

namespace quoril::test {

/// An event with texts.
inline EventEntry eventOf(quint32 time, const QString& source, const QStringList& texts)
{
    EventEntry entry;
    entry.timeGenerated = entry.timeWritten = time;
    entry.sourceName = source;
    for (const QString& text : texts)
        entry.insertStrings.append(text);
    entry.insertBytes = entry.insertStrings.byteSize();
    return entry;
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
