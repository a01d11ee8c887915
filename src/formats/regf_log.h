#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>
#include <span>
#include <vector>

namespace quoril::regf {

/// A piece of a hive's data as a log holds it.
struct LogPage
{
    quint32 offset = 0; ///< from the end of the hive's base block
    QByteArrayView bytes; ///< of the log
};

/// What a log says in one write: an entry of the newer form, or all of a log of the older one.
struct LogEntry
{
    quint32 sequence = 0;
    quint32 dataLength = 0; ///< of the hive, without its base block, once the entry is applied
    std::vector<LogPage> pages;
};

/// A transaction log beside a hive. It begins with a copy of the hive's base sector; then follow entries with
/// hashes ("HvLE", since Windows 8.1) or one bitmap of sectors ("DIRT"). Nothing of it is trusted.
class Log
{
public:
    enum class Form
    {
        None, ///< no log that could be applied; problem() says why
        Bitmap,
        Entries
    };

    /// `bytes` outlive the log and what it gives.
    explicit Log(QByteArrayView bytes);

    Form form() const { return m_form; }
    const QString& problem() const { return m_problem; }
    bool isEmpty() const { return m_bytes.isEmpty(); }

    /// By the base sector: the number of the first entry, FILETIME of the hive's last write, and the length
    /// of the hive's data in bytes.
    quint32 sequence() const;
    quint64 lastWritten() const;
    quint32 dataLength() const;
    /// The base sector as it has to stand in the hive.
    QByteArray baseSector() const;
    /// The greatest sequence number of anything in the log that could ever be applied.
    quint32 highestSequence() const { return m_highest; }

    /// The entries from the first on, each number one higher, up to the first that is not whole; of a bitmap
    /// its one. `end` says why it is the last one.
    std::vector<LogEntry> entries(QString& end) const;
    /// Whether something was written that ought to be the first entry, whole or not. A log that has only been
    /// begun holds none, or the remains of an older use.
    bool hasFirstEntry() const;

private:
    std::optional<LogEntry> entryAt(std::size_t place, quint32 wanted, QString& end) const;
    std::optional<LogEntry> bitmap(QString& end) const;
    void findHighest();

    QByteArrayView m_bytes;
    Form m_form = Form::None;
    QString m_problem;
    quint32 m_highest = 0;
};

/// The hash of the log entries.
quint64 marvin32(QByteArrayView bytes);

} // namespace quoril::regf
