#pragma once

#include "schedule/schedule_table.h"

#include <QAbstractTableModel>

namespace quoril {

/// The rows of the schedule dialog: what the table held when the list was last built.
class ScheduleModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column
    {
        ServiceName,
        ScheduleDate,
        Action,
        ColumnCount
    };

    using QAbstractTableModel::QAbstractTableModel;

    void setOrders(std::vector<ScheduledOrder> orders);

    /// The order that a row stands for.
    OrderId idOf(int row) const { return m_orders[std::size_t(row)].id; }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    std::vector<ScheduledOrder> m_orders;
};

/// The text of an action number in the active language.
QString scheduleActionText(qint32 action);

} // namespace quoril
