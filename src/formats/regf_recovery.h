#pragma once

#include "formats/regf_log.h"

#include <QStringList>

#include <span>
#include <vector>

namespace quoril::regf {

/// What became of one log.
struct LogUse
{
    enum class State
    {
        Unused, ///< the hive was shut down cleanly, or the log is older or not the next one
        Damaged, ///< could not be applied
        Applied
    };

    QString name;
    State state = State::Unused;
    quint32 first = 0; ///< sequence numbers of the entries that were applied
    quint32 last = 0;
    std::size_t pages = 0; ///< applied; sectors of 512 bytes from a bitmap
    QString why; ///< where it ended, or why it was not used
};

/// A hive file as it lies on the disk is stale when its base block is damaged or its two sequence numbers
/// differ: the last changes are in the logs beside it. This works out which of them belong to it, and applies
/// them in memory.
class Recovery
{
public:
    struct NamedLog
    {
        QString name;
        QByteArrayView bytes; ///< outlive the recovery
    };

    /// What of a hive file decides whether it is stale, and which logs are its own: base block and first bin.
    static constexpr qsizetype HeadSize = 4096 + 32;

    /// A hive that was shut down cleanly needs no logs: false, so that they need not be read.
    static bool isNeeded(QByteArrayView head);

    /// `head`: the first HeadSize bytes of the hive file, or all of a shorter one.
    Recovery(QByteArrayView head, std::span<const NamedLog> logs);

    /// How many bytes of the hive file count, base block included; 0 for one that neither has a base block
    /// nor gets one.
    std::size_t size() const;

    /// Applies the logs to a hive of size() bytes: as many as the file has, zeros after them. To be called
    /// once; the logs are not needed afterwards.
    void apply(std::span<char> hive);

    /// Some of the logs was applied: the hive is as new as they are, and may be written.
    bool isRecovered() const;
    /// A log beside the stale hive may hold changes that could not be applied: to write it would lose them.
    bool losesChanges() const;
    const std::vector<LogUse>& uses() const { return m_uses; }
    /// Bins that are none, and were left out.
    std::size_t omittedBins() const { return m_omittedBins; }

    /// One line on what was done, without the hive's name.
    QString summary() const;

private:
    struct Candidate
    {
        Log log;
        LogUse* use;
    };

    void choose(std::vector<Candidate>& candidates, QByteArrayView head);
    bool isOwn(const Candidate& candidate, QByteArrayView head) const;
    bool take(const Candidate& candidate);
    void applyBitmap(std::span<char> hive);
    void omitBadBins(std::span<char> hive);

    bool m_hasBase = false; ///< the hive's own base block is whole
    QByteArray m_base; ///< the base sector of the recovered hive
    quint32 m_highest = 0;
    quint32 m_dataLength = 0;
    std::vector<LogUse> m_uses;
    std::vector<LogEntry> m_entries; ///< in the order in which they are applied
    bool m_isBitmap = false;
    bool m_isRecovered = false;
    std::size_t m_omittedBins = 0;
};

} // namespace quoril::regf
