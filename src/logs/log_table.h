#pragma once

#include "logs/log_runs.h"
#include "logs/panel_table.h"

#include <array>
#include <memory>
#include <optional>

namespace quoril {

class EventRecords;
class QuorilLog;
class ServiceInfo;

/// The severity index of a row, which picks its colour.
enum class RowSeverity
{
    Marker = 0, ///< a row of the console's own
    Information = 1,
    Warning = 2,
    Error = 3
};

/// The background colours by severity index.
inline constexpr std::array<PanelColour, 4> SeverityColours = {0xFF8080, 0xE6FFFF, 0xFFFFE6, 0x2020FF};

/// Makes the log table, source by source.
class LogTableBuilder
{
public:
    /// Begins a table with the three columns of a log and no row.
    LogTableBuilder();

    void AddLogRow(const QString& date, const QString& codeText, const QString& text, RowSeverity severity);
    /// A row of the console's own, dated now by the machine's clock; `textId` numbers its text.
    void AddMarkerRow(const QString& codeText, quint32 textId, RowSeverity severity);
    /// A row for each record, in order.
    void addEventRows(const EventRecords& records);
    /// A row for each text line of the messages from `firstMessage` on.
    void AddMessageRows(std::shared_ptr<const QuorilLog> log, qsizetype firstMessage);

    /// The System and Application events of an instance's log period, between marker rows. Settles the log
    /// period in the service and reads its AppLog anew; what can't be read shows not at all.
    void addWindowsLogs(ServiceInfo& service);
    /// Messages of an instance's own log, those of a range or else from its last start mark on; or a row that
    /// says why there are none. False for a log that the instance names and that can't be read.
    bool addEmulatorLog(const ServiceInfo& service, const std::optional<LogRange>& range = std::nullopt);

    PanelTable take() { return std::move(m_table); }

private:
    PanelTable m_table;
};

/// A time as it stands in a log, in the form of the date column.
QString logDateText(const std::array<qint32, 6>& time);

/// The log table without rows.
PanelTable buildEmptyLogTable();

/// The logs of an instance as the panel shows them: the System and Application events of its log period
/// between marker rows, then its own log from the last start mark on.
PanelTable buildLogTable(ServiceInfo& service);

/// The text of a message box about a code of the console's own: severity 1 message, 2 warning, 3 error, any
/// other without such a word.
QString codedMessageText(const QString& codeText, const QString& text, int severity);

} // namespace quoril
