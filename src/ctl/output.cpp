#include "ctl/output.h"

#include "logs/log_table.h"
#include "platform/terminal_text.h"

#include <QJsonDocument>

#include <algorithm>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

QByteArray jsonBytes(const Console& console, const QJsonObject& object)
{
    const QByteArray json = QJsonDocument(object).toJson(QJsonDocument::Compact);
    return console.facts().outputIsTerminal ? terminalText(QString::fromUtf8(json)).toUtf8() : json;
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
    console.bytes(jsonBytes(console, object) + '\n');
}

void JsonArray::add(const QJsonObject& object)
{
    m_console.bytes((m_isEmpty ? "\n" : ",\n") + jsonBytes(m_console, object));
    m_isEmpty = false;
}

void printLogTable(Console& console, const PanelTable& table, bool json)
{
    if (json) {
        JsonArray rows(console);
        for (qsizetype row = 0; row < table.rowCount(); ++row)
            rows.add({{"date"_L1, table.text(row, 0)}, {"messageId"_L1, table.text(row, 1)},
                {"text"_L1, table.text(row, 2)},
                {"severity"_L1, severityOf(table.colour(row)).name.toString()}});
        return;
    }
    for (qsizetype row = 0; row < table.rowCount(); ++row) {
        const QString line = table.text(row, 0) + u"  "_s + table.text(row, 1).leftJustified(8) + u"  "_s
            + table.text(row, 2);
        console.line(line, severityOf(table.colour(row)).style);
    }
}

} // namespace quoril
