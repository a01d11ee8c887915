#pragma once

#include <QString>

#include <vector>

namespace quoril {

class TreePaths;

/// What a file of the machine is, read from its beginning to its end.
struct CheckedFile
{
    QString path; ///< of the machine
    QString kind; ///< "hive", "hive-log" or "event-log"
    /// Of a hive: "clean", "recovered" from its logs, "stale" without logs that help, "damaged"; of its logs:
    /// "unused", "applied", "damaged"; of an event log: "clean", "dirty" (not closed), "damaged".
    QString state;
    bool isWhole = true; ///< nothing of the machine is missing in what is read of it
    qint64 keys = 0;
    qint64 values = 0;
    qint64 pages = 0; ///< taken from logs, or from this log
    qint64 records = 0;
    qint64 damagedRecords = 0;
    qint64 damagedChunks = 0;
    QString problem; ///< why it is not whole, and what became of a log; empty where there is nothing to say
};

/// Reads all hives of the machine and of its users, the logs beside them, and all event logs. A missing
/// SYSTEM hive is reported as damaged: without it there is no machine.
std::vector<CheckedFile> checkMachine(const TreePaths& paths);

} // namespace quoril
