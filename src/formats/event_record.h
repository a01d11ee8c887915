#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <limits>
#include <vector>

namespace quoril {

/// The insert strings of one event, kept in one buffer that is reused from event to event.
class InsertStrings
{
public:
    qsizetype count() const { return qsizetype(m_ends.size()); }
    bool isEmpty() const { return m_ends.empty(); }

    /// The string at `index` (0 to count() - 1); valid until the next change.
    QStringView at(qsizetype index) const
    {
        const qsizetype begin = index == 0 ? 0 : m_ends[std::size_t(index - 1)];
        return QStringView(m_units).mid(begin, m_ends[std::size_t(index)] - begin);
    }

    void clear()
    {
        m_units.resize(0);
        m_ends.clear();
    }

    /// Appends a string; a zero unit ends it, as it does in an EVENTLOGRECORD.
    void append(QStringView text)
    {
        m_units.append(text);
        endString();
    }

    /// A string in the making: units appended to the buffer after beginString() become a string with
    /// endString(); without it, the next beginString() drops them.
    void beginString() { m_units.resize(m_ends.empty() ? 0 : m_ends.back()); }
    QString& units() { return m_units; }
    void endString()
    {
        const qsizetype begin = m_ends.empty() ? 0 : m_ends.back();
        if (const qsizetype zero = m_units.indexOf(QChar(u'\0'), begin); zero >= 0)
            m_units.resize(zero);
        m_ends.push_back(m_units.size());
    }

    /// What the strings take in an EVENTLOGRECORD, each with its terminator; in bytes.
    quint32 byteSize() const { return quint32((m_units.size() + count()) * 2); }

    QStringList toList() const
    {
        QStringList list;
        list.reserve(count());
        for (qsizetype i = 0; i < count(); ++i)
            list.append(at(i).toString());
        return list;
    }

    friend bool operator==(const InsertStrings&, const InsertStrings&) = default;

private:
    QString m_units;
    std::vector<qsizetype> m_ends;
};

/// Values of EventEntry::eventType.
namespace event_type {
inline constexpr quint16 Success = 0;
inline constexpr quint16 Error = 1;
inline constexpr quint16 Warning = 2;
inline constexpr quint16 Information = 4;
inline constexpr quint16 AuditSuccess = 8;
inline constexpr quint16 AuditFailure = 16;
} // namespace event_type

/// One event as the classic reading call gives it, whatever file or call it comes from.
struct EventEntry
{
    quint32 recordNumber = 0;
    quint32 timeGenerated = 0; ///< seconds since 1970-01-01 UTC
    quint32 timeWritten = 0; ///< seconds since 1970-01-01 UTC
    quint32 eventId = 0; ///< qualifiers in the upper half
    quint16 eventType = 0; ///< a value of event_type
    quint16 eventCategory = 0;
    quint32 insertBytes = 0; ///< DataOffset - StringOffset of the record; 0 where the offsets are damaged
    QString sourceName;
    QString computerName;
    InsertStrings insertStrings;
    QByteArray userSid; ///< binary security identifier, empty without one
    QByteArray data;

    friend bool operator==(const EventEntry&, const EventEntry&) = default;
};

/// The limit of a reader that takes records of any size.
inline constexpr quint32 NoRecordLimit = std::numeric_limits<quint32>::max();

/// A span of TimeGenerated, in seconds since 1970-01-01 UTC; both ends belong to it.
struct EventSpan
{
    qint64 from = 0;
    qint64 to = std::numeric_limits<quint32>::max();

    bool contains(quint32 timeGenerated) const { return timeGenerated >= from && timeGenerated <= to; }
};

} // namespace quoril
