#pragma once

#include "ctl/console.h"
#include "formats/event_record.h"

#include <QByteArray>

namespace quoril {

/// Puts events into text, in UTF-8. What it costs to print a log is mostly this.
class EventText
{
public:
    /// The event on one line, without a line end; those in its texts become blanks.
    const QByteArray& line(const EventEntry& entry);
    /// The event as a JSON object.
    const QByteArray& json(const EventEntry& entry);

    static LineStyle styleOf(const EventEntry& entry);
    /// A moment in UTC, "2026-11-30T17:00:00Z".
    static QString utcText(quint32 moment);

private:
    qint64 localOffset(quint32 moment);

    QByteArray m_text;
    // Of a day of UTC in which the local time keeps its distance to it.
    qint64 m_day = -1;
    bool m_isEven = false;
    qint64 m_offset = 0; ///< seconds
};

} // namespace quoril
