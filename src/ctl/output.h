#pragma once

#include "ctl/console.h"

#include <QJsonObject>
#include <QStringList>

#include <vector>

namespace quoril {

class PanelTable;

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

private:
    Console& m_console;
    bool m_isEmpty = true;
};

/// The rows of a log table: lines in the colour of their severity, or objects with "date", "messageId",
/// "text" and "severity".
void printLogTable(Console& console, const PanelTable& table, bool json);

} // namespace quoril
