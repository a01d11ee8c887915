#include "logs/log_table.h"

#include "logs/app_event_log.h"
#include "logs/quoril_log.h"
#include "platform/clock.h"
#include "platform/machine.h"
#include "resources/resource_module.h"
#include "resources/text_ids.h"
#include "services/service_info.h"

#include <QDateTime>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

enum Column
{
    DateColumn,
    CodeColumn,
    TextColumn
};

PanelColour colourOf(RowSeverity severity)
{
    return SeverityColours[std::size_t(severity)];
}

/// At least so many digits, a sign in front of them.
QString digits(int number, int count)
{
    const QString text = QString::number(std::abs(number)).rightJustified(count, u'0');
    return number < 0 ? u'-' + text : text;
}

QString dateText(const std::array<qint32, 6>& time)
{
    return digits(time[0], 4) + u'-' + digits(time[1], 2) + u'-' + digits(time[2], 2) + u' '
        + digits(time[3], 2) + u':' + digits(time[4], 2) + u':' + digits(time[5], 2);
}

QString localDateText(qint64 seconds)
{
    const QDateTime local = QDateTime::fromSecsSinceEpoch(seconds);
    const QDate date = local.date();
    const QTime time = local.time();
    return dateText({date.year(), date.month(), date.day(), time.hour(), time.minute(), time.second()});
}

/// The type of an event as a severity; without a tag only event 100 is an error.
RowSeverity severityOf(quint16 type, quint32 eventId)
{
    constexpr quint32 UntaggedError = 100;
    switch (type) {
    case 1:
        return RowSeverity::Error;
    case 2:
        return RowSeverity::Warning;
    case 4:
        return RowSeverity::Information;
    default:
        return eventId == UntaggedError ? RowSeverity::Error : RowSeverity::Information;
    }
}

class EventRows : public PanelRows
{
public:
    explicit EventRows(const EventRecords& records) : m_records(records) { }

    qsizetype count() const override { return m_records.size(); }
    PanelColour colour(qsizetype row) const override
    {
        return colourOf(severityOf(m_records.typeOf(row), m_records.eventIdOf(row)));
    }
    QString text(qsizetype row, int column) const override
    {
        switch (column) {
        case DateColumn:
            return localDateText(m_records.timeOf(row));
        case CodeColumn:
            return QString::number(m_records.eventIdOf(row), 16).toUpper().rightJustified(8, u'0');
        default:
            return m_records.textOf(row).toString();
        }
    }

private:
    EventRecords m_records;
};

class MessageRows : public PanelRows
{
public:
    MessageRows(std::shared_ptr<const QuorilLog> log, qsizetype firstMessage)
        : m_log(std::move(log))
        , m_first(m_log->firstLineOf(firstMessage))
    {
    }

    qsizetype count() const override { return m_log->lineCount() - m_first; }
    PanelColour colour(qsizetype row) const override
    {
        // The levels of the log are the severity indexes.
        return colourOf(RowSeverity(m_log->levelOf(m_log->messageOf(m_first + row))));
    }
    QString text(qsizetype row, int column) const override
    {
        const qsizetype line = m_first + row;
        switch (column) {
        case DateColumn:
            return dateText(m_log->timeOf(m_log->messageOf(line)));
        case CodeColumn:
            return m_log->codeTextOf(m_log->messageOf(line));
        default:
            return m_log->lineText(line);
        }
    }

private:
    std::shared_ptr<const QuorilLog> m_log;
    qsizetype m_first;
};

void settleLogPeriod(ServiceInfo& service)
{
    if (service.LogFrom == 0 && service.LogTo == 0)
        return;
    const qint64 now = machine().clock().now();
    if (service.LogFrom == 0) {
        service.LogFrom = quint32(now - qint64(machine().clock().tickCount() / 1000));
        if (service.LogFrom == 0)
            service.LogFrom = quint32(now - 60);
    }
    if (service.LogTo == 0)
        service.LogTo = quint32(now + 3);
}

} // namespace

QString logDateText(const std::array<qint32, 6>& time)
{
    return dateText(time);
}

LogTableBuilder::LogTableBuilder()
    : m_table({{loadText(text::ColumnDate), 8, 1, true}, {loadText(text::ColumnMessageId), 8, 1},
        {loadText(text::ColumnMessageText), 1, 8}})
{
}

void LogTableBuilder::AddLogRow(
    const QString& date, const QString& codeText, const QString& text, RowSeverity severity)
{
    m_table.addRow({date, codeText, text}, colourOf(severity));
}

void LogTableBuilder::AddMarkerRow(const QString& codeText, quint32 textId, RowSeverity severity)
{
    AddLogRow(localDateText(machine().clock().now()), codeText, loadText(textId), severity);
}

void LogTableBuilder::addEventRows(const EventRecords& records)
{
    m_table.addRows(std::make_shared<EventRows>(records));
}

void LogTableBuilder::AddMessageRows(std::shared_ptr<const QuorilLog> log, qsizetype firstMessage)
{
    m_table.addRows(std::make_shared<MessageRows>(std::move(log), firstMessage));
}

void LogTableBuilder::addWindowsLogs(ServiceInfo& service)
{
    settleLogPeriod(service);
    AppEventLog& events = *service.AppLog;
    events.ReadLog(u"Application", service.LogFrom, service.LogTo);
    events.ReadLog(u"System", service.LogFrom, service.LogTo);
    if (!events.m_system.isEmpty()) {
        AddMarkerRow(u"02000039"_s, text::SystemLogBegin, RowSeverity::Marker);
        addEventRows(events.m_system);
        AddMarkerRow(u"0200003A"_s, text::SystemLogEnd, RowSeverity::Marker);
    }
    if (!events.m_application.isEmpty()) {
        AddMarkerRow(u"02000037"_s, text::ApplicationLogBegin, RowSeverity::Marker);
        addEventRows(events.m_application);
        AddMarkerRow(u"02000038"_s, text::ApplicationLogEnd, RowSeverity::Marker);
    }
}

bool LogTableBuilder::addEmulatorLog(const ServiceInfo& service, const std::optional<LogRange>& range)
{
    const auto log = std::make_shared<QuorilLog>();
    const qint32 result = range ? log->Load(service.LogFile, *range)
                                : log->Load(service.LogFile, QuorilLog::Keep::FromLastStart);
    switch (result) {
    case 1:
        AddMarkerRow(u"0200003C"_s, text::LogFileNotDefined, RowSeverity::Marker);
        break;
    case 2:
        AddMarkerRow(u"0200003B"_s, text::LogFileNotOpened, RowSeverity::Error);
        break;
    default:
        AddMessageRows(log, range ? 0 : log->m_last_message);
        break;
    }
    return result != 2;
}

PanelTable buildEmptyLogTable()
{
    return LogTableBuilder().take();
}

PanelTable buildLogTable(ServiceInfo& service)
{
    LogTableBuilder table;
    table.addWindowsLogs(service);
    table.addEmulatorLog(service);
    return table.take();
}

QString codedMessageText(const QString& codeText, const QString& text, int severity)
{
    constexpr std::array<quint32, 3> words
        = {text::SeverityMessage, text::SeverityWarning, text::SeverityError};
    const bool known = severity >= 1 && severity <= int(words.size());
    const QString prefix = known ? loadText(words[std::size_t(severity - 1)]) : QString();
    return prefix + u' ' + codeText + u", "_s + text;
}

} // namespace quoril
