#include "logs/panel_table.h"

#include <algorithm>
#include <new>

namespace quoril {

namespace {

// A cell is read into a buffer of 1023 units, of which one is its end.
constexpr qsizetype ClipboardCellUnits = 1022;

class OwnRow : public PanelRows
{
public:
    OwnRow(QStringList texts, PanelColour colour) : m_texts(std::move(texts)), m_colour(colour) { }

    qsizetype count() const override { return 1; }
    QString text(qsizetype, int column) const override { return m_texts.value(column); }
    PanelColour colour(qsizetype) const override { return m_colour; }

private:
    QStringList m_texts;
    PanelColour m_colour;
};

} // namespace

void PanelTable::addRow(QStringList texts, PanelColour colour)
{
    addRows(std::make_shared<OwnRow>(std::move(texts), colour));
}

void PanelTable::addRows(std::shared_ptr<const PanelRows> rows)
{
    const qsizetype count = rows->count();
    if (count == 0)
        return;
    m_sections.push_back({m_rowCount, std::move(rows)});
    m_rowCount += count;
}

const PanelTable::Section& PanelTable::sectionOf(qsizetype row) const
{
    const auto next = std::upper_bound(m_sections.begin(), m_sections.end(), row,
        [](qsizetype wanted, const Section& section) { return wanted < section.first; });
    return *std::prev(next);
}

QString PanelTable::text(qsizetype row, int column) const
{
    if (column >= columnCount())
        return {};
    const Section& section = sectionOf(row);
    return section.rows->text(row - section.first, column);
}

PanelColour PanelTable::colour(qsizetype row) const
{
    const Section& section = sectionOf(row);
    return section.rows->colour(row - section.first);
}

Result<QString> clipboardText(const PanelTable& table, const std::vector<RowRange>& rows)
try {
    QString text;
    for (const RowRange& range : rows) {
        for (qsizetype row = range.first; row <= range.last; ++row) {
            for (int column = 0; column < table.columnCount(); ++column) {
                if (column > 0)
                    text += u"    ";
                text += QStringView(table.text(row, column)).left(ClipboardCellUnits);
            }
            text += u"\r\n";
        }
    }
    return text;
} catch (const std::bad_alloc&) {
    return Error{error::NotEnoughMemory, {}};
}

} // namespace quoril
