#include "ctl/output.h"

#include "logs/log_table.h"
#include "platform/terminal_text.h"

#include <QJsonDocument>

#include <algorithm>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

QByteArray jsonBytes(const Console& console, const QByteArray& json)
{
    return console.facts().outputIsTerminal ? terminalText(QString::fromUtf8(json)).toUtf8() : json;
}

QByteArray compact(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

struct Severity
{
    QStringView name;
    LineStyle style;
};

constexpr std::array<Severity, SeverityColours.size()> Severities = {{
    {u"marker", LineStyle::Marker},
    {u"information", LineStyle::Plain},
    {u"warning", LineStyle::Warning},
    {u"error", LineStyle::Error},
}};

const Severity& severityOf(PanelColour colour)
{
    const auto found = std::find(SeverityColours.begin(), SeverityColours.end(), colour);
    return Severities[std::size_t(found - SeverityColours.begin()) % Severities.size()];
}

QJsonObject jsonOf(const PanelTable& table, qsizetype row)
{
    return {{"date"_L1, table.text(row, 0)}, {"messageId"_L1, table.text(row, 1)},
        {"text"_L1, table.text(row, 2)}, {"severity"_L1, severityOf(table.colour(row)).name.toString()}};
}

QString lineOf(const PanelTable& table, qsizetype row)
{
    return table.text(row, 0) + u"  "_s + table.text(row, 1).leftJustified(8) + u"  "_s + table.text(row, 2);
}

} // namespace

void TextTable::print(Console& console) const
{
    const bool headed = console.facts().outputIsTerminal;
    std::vector<qsizetype> widths(std::size_t(m_headings.size()));
    const auto widen = [&widths](const QStringList& cells) {
        for (std::size_t column = 0; column < widths.size(); ++column)
            widths[column] = std::max(widths[column], cells.value(qsizetype(column)).size());
    };
    if (headed)
        widen(m_headings);
    std::for_each(m_rows.begin(), m_rows.end(), widen);

    const auto lineOf = [&widths](const QStringList& cells) {
        QString line;
        for (qsizetype column = 0; column < cells.size(); ++column) {
            const bool last = column + 1 == cells.size();
            line += last ? cells[column] : cells[column].leftJustified(widths[std::size_t(column)] + 2);
        }
        return line;
    };
    if (headed)
        console.line(lineOf(m_headings), LineStyle::Heading);
    for (const QStringList& row : m_rows)
        console.line(lineOf(row));
}

void printJson(Console& console, const QJsonObject& object)
{
    console.bytes(jsonBytes(console, compact(object)) + '\n');
}

void JsonArray::add(const QJsonObject& object)
{
    add(compact(object));
}

void JsonArray::add(const QByteArray& json)
{
    m_console.bytes(m_isEmpty ? "\n" : ",\n");
    m_console.bytes(jsonBytes(m_console, json));
    m_isEmpty = false;
}

LogPrinter::LogPrinter(Console& console, Form form, LogRowFilter filter)
    : m_console(console)
    , m_form(form)
    , m_filter(std::move(filter))
{
    if (form == Form::JsonArray)
        m_array.emplace(console);
}

bool LogPrinter::isWanted(const PanelTable& table, qsizetype row) const
{
    return std::size_t(&severityOf(table.colour(row)) - Severities.data()) >= m_filter.leastSeverity
        && (m_filter.pattern.pattern().isEmpty() || m_filter.pattern.match(table.text(row, 2)).hasMatch());
}

void LogPrinter::print(const QString& name, const PanelTable& table)
{
    const bool isFiltered = m_filter.leastSeverity > 0 || !m_filter.pattern.pattern().isEmpty();
    qsizetype first = 0;
    if (m_filter.lastRows != LogRowFilter::AllRows) {
        first = table.rowCount();
        for (quint32 wanted = 0; first > 0 && wanted < m_filter.lastRows;)
            wanted += quint32(isWanted(table, --first));
    }
    for (qsizetype row = first; row < table.rowCount(); ++row) {
        if (!isFiltered || isWanted(table, row))
            printRow(name, table, row);
    }
}

void LogPrinter::printRow(const QString& name, const PanelTable& table, qsizetype row)
{
    const Severity& severity = severityOf(table.colour(row));
    if (m_form == Form::Text || m_form == Form::NamedText) {
        const QString begin = m_form == Form::NamedText ? name + u"  "_s : QString();
        m_console.line(begin + lineOf(table, row), severity.style);
        return;
    }
    QJsonObject object = jsonOf(table, row);
    object.insert("name"_L1, name);
    if (m_array)
        m_array->add(object);
    else
        printJson(m_console, object);
}

void printLogRow(Console& console, const PanelTable& table, qsizetype row, JsonArray* array)
{
    if (array)
        array->add(jsonOf(table, row));
    else
        console.line(lineOf(table, row), severityOf(table.colour(row)).style);
}

QString severityName(RowSeverity severity)
{
    return Severities[std::size_t(severity)].name.toString();
}

} // namespace quoril
