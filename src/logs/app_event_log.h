#pragma once

#include <QString>
#include <QStringView>

#include <functional>
#include <memory>
#include <vector>

namespace quoril {

struct EventEntry;

/// One text line of a Windows event.
struct EventRecord
{
    /// The type of a line without a tag.
    static constexpr quint16 NoTag = 0xFFFF;

    quint16 m_type = 0; ///< 1 error, 2 warning, 4 information, or NoTag
    quint32 m_event_id = 0; ///< the event's identifier, or the message code from its text
    qint64 m_time = 0; ///< when the event was generated, in seconds since 1970-01-01 UTC
    QString m_text;

    friend bool operator==(const EventRecord&, const EventRecord&) = default;
};

/// Records in the order of their events. Their texts are kept in one piece and a record is made when it is
/// asked for. Copies share the content until one of them changes.
class EventRecords
{
public:
    qsizetype size() const { return m_content ? qsizetype(m_content->lines.size()) : 0; }
    bool isEmpty() const { return size() == 0; }
    /// The record at the index, 0 to size() - 1.
    EventRecord operator[](qsizetype index) const;

    // The record's fields one by one; the text is valid until the next change.
    quint16 typeOf(qsizetype index) const { return line(index).type; }
    quint32 eventIdOf(qsizetype index) const { return line(index).eventId; }
    qint64 timeOf(qsizetype index) const { return line(index).time; }
    QStringView textOf(qsizetype index) const;

    void append(quint16 type, quint32 eventId, qint64 time, QStringView text);
    void clear() { m_content.reset(); }

private:
    struct Line
    {
        qint64 time;
        qsizetype end; ///< where the text of the line ends in `texts`
        quint32 eventId;
        quint16 type;
    };
    struct Content
    {
        std::vector<Line> lines;
        std::u16string texts;
    };

    const Line& line(qsizetype index) const { return m_content->lines[std::size_t(index)]; }

    std::shared_ptr<Content> m_content;
};

/// Reads the event logs of the machine for one instance: of the Application log the entries of the emulator's
/// source, of the System log those of all sources.
class AppEventLog
{
public:
    /// Replaces the records of one log, "Application" or for any other name the System log, with those of
    /// the time from `from` to 15 seconds after `to`, in seconds since 1970-01-01 UTC. False if the log can't
    /// be opened; it then has no records. A failure on the way counts as the end of the log.
    bool ReadLog(QStringView name, qint64 from, qint64 to);

    qsizetype GetApplicationCount() const { return m_application.size(); }
    qsizetype GetSystemCount() const { return m_system.size(); }

    EventRecords m_application;
    EventRecords m_system;
};

/// What is called for each text line of an event; the text is valid during the call.
using EventLineVisitor = std::function<void(quint16 type, quint32 eventId, qint64 time, QStringView text)>;

/// Visits the text lines of a log by the rules of AppEventLog::ReadLog, with its result.
bool walkEventLines(QStringView name, qint64 from, qint64 to, const EventLineVisitor& visit);

/// Visits the text lines of one event.
void splitEventLines(const EventEntry& entry, const EventLineVisitor& visit);

} // namespace quoril
