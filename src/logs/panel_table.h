#pragma once

#include "formats/error.h"

#include <QString>
#include <QStringList>
#include <QStringView>

#include <memory>
#include <vector>

namespace quoril {

/// A background colour as a COLORREF, 0x00BBGGRR.
using PanelColour = quint32;

/// A column of the panel. Until its width is known, it is `client width / divisor * multiplier` pixels, the
/// division truncating.
struct PanelColumn
{
    QString heading;
    int divisor = 1;
    int multiplier = 1;
    bool endMatters = false; ///< a text that is cut keeps its end

    int firstWidth(int clientWidth) const { return clientWidth / divisor * multiplier; }
};

/// Rows that a table shows. Texts are made when they are asked for, so that a row costs no more memory than
/// its source. Rows never change while a table holds them.
class PanelRows
{
public:
    virtual ~PanelRows() = default;

    virtual qsizetype count() const = 0;
    /// The text of a cell; row 0 to count() - 1, column one of the table's.
    virtual QString text(qsizetype row, int column) const = 0;
    virtual PanelColour colour(qsizetype row) const = 0;
};

/// A run of rows, both ends included.
struct RowRange
{
    qsizetype first = 0;
    qsizetype last = 0;

    friend bool operator==(const RowRange&, const RowRange&) = default;
};

/// What the right-hand panel shows, as a value: columns, and rows with a text for each column and a colour.
/// The list, the clipboard, the printer and the command-line program read it. A copy is cheap and shares the
/// rows' sources.
class PanelTable
{
public:
    PanelTable() = default;
    explicit PanelTable(std::vector<PanelColumn> columns) : m_columns(std::move(columns)) { }

    /// Appends one row with texts of its own.
    void addRow(QStringList texts, PanelColour colour);
    /// Appends the rows of a source.
    void addRows(std::shared_ptr<const PanelRows> rows);

    int columnCount() const { return int(m_columns.size()); }
    const PanelColumn& column(int index) const { return m_columns[std::size_t(index)]; }
    qsizetype rowCount() const { return m_rowCount; }

    /// The text of a cell; empty for a column that the table does not have.
    QString text(qsizetype row, int column) const;
    PanelColour colour(qsizetype row) const;

private:
    struct Section
    {
        qsizetype first;
        std::shared_ptr<const PanelRows> rows;
    };

    const Section& sectionOf(qsizetype row) const;

    std::vector<PanelColumn> m_columns;
    std::vector<Section> m_sections; ///< in order of their first rows, none empty
    qsizetype m_rowCount = 0;
};

/// What Copy puts on the clipboard: the rows in the order of the ranges, their cells separated by four
/// blanks, each row ending in CR LF. Of a cell no more than 1022 units are taken. Fails where there isn't so
/// much memory.
Result<QString> clipboardText(const PanelTable& table, const std::vector<RowRange>& rows);

} // namespace quoril
