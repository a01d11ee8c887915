#pragma once

#include "formats/error.h"
#include "formats/event_log_record.h"

#include <QByteArray>
#include <QIODevice>

#include <optional>

namespace quoril {

/// Where the records of a classic event log file stand. Offsets count from the file's start.
struct EvtState
{
    static constexpr quint32 Dirty = 1;
    static constexpr quint32 Wrapped = 2;
    static constexpr quint32 Full = 4;
    static constexpr quint32 Archive = 8;

    quint32 oldestOffset = 48;
    quint32 endOffset = 48; ///< of the end record
    quint32 nextNumber = 1;
    quint32 oldestNumber = 0; ///< 0 while the log is empty
    quint32 fileSize = 0; ///< in bytes
    quint32 flags = 0;
    quint32 retention = 0; ///< in seconds

    bool isEmpty() const { return oldestOffset == endOffset; }
};

/// The ring of records in a classic event log file: reads bytes across its seam, knows the header and the
/// end record. The device must be random-access and outlive it.
class EvtRing
{
public:
    static constexpr quint32 HeaderSize = 48;
    static constexpr quint32 EndRecordSize = 40;
    static constexpr quint32 Filler = 0x27;

    EvtRing(QIODevice& device, quint32 fileSize) : m_device(&device), m_fileSize(fileSize) { }

    quint32 fileSize() const { return m_fileSize; }
    quint32 capacity() const { return m_fileSize - HeaderSize; }
    void setFileSize(quint32 size);
    void forget() { m_window.clear(); } ///< after the file has been written to

    /// `size` bytes from `offset`, going on at the first record's place after the file's end; valid until
    /// the next call. Empty where the file does not give them.
    QByteArrayView bytes(quint32 offset, quint32 size);

    /// The whole record at `offset`; none if it is damaged.
    std::optional<EventRecordView> record(quint32 offset);

    /// The state in an end record at `offset`; none if there is none.
    std::optional<EvtState> endRecord(quint32 offset);

    /// Whether the offsets of `state` lie in the ring, on boundaries of four bytes.
    bool holds(const EvtState& state) const;

    /// Where the thing after a thing of `size` bytes at `offset` begins.
    quint32 advance(quint32 offset, quint32 size) const;

    /// How many bytes lie on the way from `from` on to `to`.
    quint32 distance(quint32 from, quint32 to) const
    {
        return to >= from ? to - from : capacity() - (from - to);
    }

    /// `offset`, or the first record's place where no fixed part fits after `offset`.
    quint32 recordPlace(quint32 offset) const;

private:
    bool fill(quint32 offset, quint32 size);
    /// The number at `offset`, read without moving the window; none where the file doesn't give it.
    std::optional<quint32> wordAt(quint32 offset);

    QIODevice* m_device;
    quint32 m_fileSize;
    QByteArray m_window;
    quint32 m_windowOffset = 0;
    QByteArray m_joined;
};

/// Finds out where the records of the log on `device` stand: from the header, or from the end record where
/// the header is stale; a header whose records stand without a gap does without the end record. Fails with
/// EventLogFileCorrupt where neither has it.
Result<EvtState> readEvtState(QIODevice& device);

QByteArray evtHeaderBytes(const EvtState& state);
QByteArray evtEndRecordBytes(const EvtState& state);

} // namespace quoril
