#pragma once

#include "platform/event_logs.h"

namespace quoril {

/// The event logs of the system that the program runs on, read and written by its classic calls. An entry
/// that is reported goes to the log that its source is registered for, "Application" without a registration.
class WindowsEventLogs : public EventLogs
{
public:
    Result<std::unique_ptr<EventLog>> open(QStringView name, EventSpan span) override;
    Status report(QStringView name, const EventEntry& entry) override;
};

} // namespace quoril
