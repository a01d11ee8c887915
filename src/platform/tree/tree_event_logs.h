#pragma once

#include "platform/event_logs.h"

namespace quoril {

class TreePaths;

/// The event logs of a tree: winevt\Logs\<name>.evtx, which is only read, and the classic log below config,
/// to which the tree's own service manager and emulators report. A log is the union of both in order of time.
class TreeEventLogs : public EventLogs
{
public:
    /// The paths are not owned and live as long as this object.
    explicit TreeEventLogs(const TreePaths& paths) : m_paths(paths) { }

    /// "System" or "Application"; 1500 when none of the log's files is one, 2 when there are no files.
    Result<std::unique_ptr<EventLog>> open(QStringView name, EventSpan span) override;

    /// Appends to the classic log, under a lock between programs; the log is made when there is none. 19
    /// where the tree can't be written.
    Status report(QStringView name, const EventEntry& entry) override;

private:
    const TreePaths& m_paths;
};

} // namespace quoril
