#pragma once

#include "logs/panel_table.h"

#include <QAbstractTableModel>

namespace quoril {

/// A panel table for a view: the texts, and the row colour as background. Nothing is kept beside the table.
class PanelTableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    using QAbstractTableModel::QAbstractTableModel;

    /// Whether a cell that is cut shows the end of its text.
    static constexpr int EndMattersRole = Qt::UserRole;

    void setTable(PanelTable table);
    const PanelTable& table() const { return m_table; }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    PanelTable m_table;
};

} // namespace quoril
