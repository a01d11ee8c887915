#include "logs/panel_table_model.h"

#include <QColor>

#include <algorithm>
#include <limits>

namespace quoril {

namespace {

QColor colorOf(PanelColour colour)
{
    return QColor(int(colour & 0xFF), int(colour >> 8 & 0xFF), int(colour >> 16 & 0xFF));
}

} // namespace

void PanelTableModel::setTable(PanelTable table)
{
    beginResetModel();
    m_table = std::move(table);
    endResetModel();
}

int PanelTableModel::rowCount(const QModelIndex& parent) const
{
    constexpr qsizetype MostRows = std::numeric_limits<int>::max();
    return parent.isValid() ? 0 : int(std::min(m_table.rowCount(), MostRows));
}

int PanelTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_table.columnCount();
}

QVariant PanelTableModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    if (role == Qt::DisplayRole)
        return m_table.text(index.row(), index.column());
    if (role == Qt::BackgroundRole)
        return colorOf(m_table.colour(index.row()));
    if (role == EndMattersRole)
        return m_table.column(index.column()).endMatters;
    return {};
}

QVariant PanelTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && section >= 0 && section < m_table.columnCount()) {
        if (role == Qt::DisplayRole)
            return m_table.column(section).heading;
        if (role == Qt::TextAlignmentRole)
            return QVariant::fromValue(Qt::Alignment(Qt::AlignLeft | Qt::AlignVCenter));
    }
    return {};
}

} // namespace quoril
