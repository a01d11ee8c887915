#pragma once

#include "formats/error.h"
#include "formats/event_record.h"

#include <QStringView>

#include <memory>

namespace quoril {

/// An open event log, read forwards, the oldest entry first. It closes itself.
class EventLog
{
public:
    virtual ~EventLog() = default;

    /// Reads the next entry whose time of generation lies within the span that the log was opened with. False
    /// at the end of the log and at a failure alike; the entry is then unspecified.
    virtual bool next(EventEntry& entry) = 0;
};

/// The machine's event logs.
class EventLogs
{
public:
    virtual ~EventLogs() = default;

    /// Opens "System" or "Application".
    virtual Result<std::unique_ptr<EventLog>> open(QStringView name, EventSpan span) = 0;

    /// Adds an entry at the log's end; its record number is given by the log.
    virtual Status report(QStringView name, const EventEntry& entry) = 0;
};

} // namespace quoril
