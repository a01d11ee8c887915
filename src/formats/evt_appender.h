#pragma once

#include "formats/evt_layout.h"

namespace quoril {

/// Appends events to a classic event log (.Evt). The file grows by 64 KB up to its greatest size; after
/// that the oldest events make room, whatever the header's retention says.
///
/// Each step leaves a file that can be read: the header is marked dirty first, the old end record stays
/// valid until the last write of an append, and finish() makes the header valid again. Locking the file
/// against others, and making it durable, is the caller's part.
class EvtAppender
{
public:
    static constexpr quint32 Granularity = 64 * 1024;
    static constexpr quint32 DefaultMaximumSize = 512 * 1024;

    /// Opens the log on `device`, which is open for reading and writing, random-access, and outlives the
    /// appender; an empty device becomes an empty log. `maximumSize` is in bytes and is rounded down to
    /// the granularity; a file that is larger already stays as large. Fails with EventLogFileCorrupt or
    /// WriteFault.
    static Result<EvtAppender> open(QIODevice& device, quint32 maximumSize = DefaultMaximumSize);

    /// Appends `entry` under the log's next number; its own number is not looked at. Fails with
    /// InvalidParameter for an event that does not fit into the log, and with WriteFault.
    Status append(const EventEntry& entry);

    /// As append(), for the bytes of one whole closed EVENTLOGRECORD.
    Status appendRecord(QByteArray record);

    /// Writes the clean header. An appender that goes away without this leaves the log dirty, yet readable.
    Status finish();

    const EvtState& state() const { return m_state; }

private:
    EvtAppender(QIODevice& device, const EvtState& state, quint32 maximumSize);

    Status markDirty();
    Status grow(quint32 needed);
    Status makeRoom(quint32 needed);
    void dropOldest();
    Status write(quint32 offset, QByteArrayView bytes);
    Status writeAround(quint32 offset, QByteArrayView bytes);
    Status flush();

    QIODevice* m_device;
    EvtRing m_ring;
    EvtState m_state;
    quint32 m_maximumSize;
    bool m_dirty = false;
};

} // namespace quoril
