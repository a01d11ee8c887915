#pragma once

#include "ctl/console.h"

#include <QJsonObject>
#include <QRegularExpression>
#include <QStringList>

#include <limits>
#include <optional>
#include <vector>

namespace quoril {

class PanelTable;
enum class RowSeverity;

/// Rows in columns as wide as their longest cell, two blanks between them. The headings stand on a terminal
/// only, so that a script has nothing to skip.
class TextTable
{
public:
    explicit TextTable(QStringList headings) : m_headings(std::move(headings)) { }

    void add(QStringList cells) { m_rows.push_back(std::move(cells)); }
    void print(Console& console) const;

private:
    QStringList m_headings;
    std::vector<QStringList> m_rows;
};

/// One JSON object, on a line of its own.
void printJson(Console& console, const QJsonObject& object);

/// A JSON array that is put out while it is made, an object on each line.
class JsonArray
{
public:
    explicit JsonArray(Console& console) : m_console(console) { m_console.bytes("["); }
    ~JsonArray() { m_console.bytes(m_isEmpty ? "]\n" : "\n]\n"); }
    JsonArray(const JsonArray&) = delete;
    JsonArray& operator=(const JsonArray&) = delete;

    void add(const QJsonObject& object);
    /// An object that is JSON already, in UTF-8.
    void add(const QByteArray& json);

private:
    Console& m_console;
    bool m_isEmpty = true;
};

/// Which rows of logs are printed.
struct LogRowFilter
{
    static constexpr quint32 AllRows = std::numeric_limits<quint32>::max();

    quint32 lastRows = AllRows; ///< no more than the last so many of them
    std::size_t leastSeverity = 0; ///< of RowSeverity
    QRegularExpression pattern; ///< in the text; an empty one leaves all
};

/// Prints rows of log tables: lines in the colour of their severity, or objects with "name", "date",
/// "messageId", "text" and "severity".
class LogPrinter
{
public:
    enum class Form
    {
        Text,
        NamedText, ///< the instance's name before each row
        JsonArray,
        JsonLines
    };

    LogPrinter(Console& console, Form form, LogRowFilter filter);

    /// The rows of the table that the filter leaves.
    void print(const QString& name, const PanelTable& table);
    /// From here on the number of rows is not limited.
    void takeAllRows() { m_filter.lastRows = LogRowFilter::AllRows; }

private:
    bool isWanted(const PanelTable& table, qsizetype row) const;
    void printRow(const QString& name, const PanelTable& table, qsizetype row);

    Console& m_console;
    Form m_form;
    LogRowFilter m_filter;
    std::optional<JsonArray> m_array;
};

/// A row of a log table that is no instance's, in the array if there is one: without "name".
void printLogRow(Console& console, const PanelTable& table, qsizetype row, JsonArray* array);

/// The word for a severity.
QString severityName(RowSeverity severity);

} // namespace quoril
