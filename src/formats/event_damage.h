#pragma once

#include <QString>

namespace quoril {

/// What of an event log could not be read.
struct EventDamage
{
    quint64 records = 0; ///< that could not be decoded, at least
    quint64 chunks = 0; ///< of an .evtx that have no header; what is seen of their records is counted above
    qint64 firstOffset = -1; ///< of the first damage in the file, in bytes; -1 without any

    bool any() const { return firstOffset >= 0; }
    void add(qint64 offset, quint64 recordCount);
    /// In words for standard error, such as "2 records could not be decoded, the first at 0x1a00".
    QString text() const;
};

} // namespace quoril
