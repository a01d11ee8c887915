#include "schedule/schedule_model.h"

#include "platform/terminal_text.h"
#include "resources/resource_module.h"
#include "resources/text_ids.h"
#include "schedule/schedule_time.h"

namespace quoril {

QString scheduleActionText(qint32 action)
{
    switch (action) {
    case schedule_action::Start:
        return loadText(text::ActionStart);
    case schedule_action::Stop:
        return loadText(text::ActionStop);
    default:
        return loadText(text::ActionUnknown);
    }
}

void ScheduleModel::setOrders(std::vector<ScheduledOrder> orders)
{
    beginResetModel();
    m_orders = std::move(orders);
    endResetModel();
}

int ScheduleModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_orders.size());
}

int ScheduleModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(ColumnCount);
}

QVariant ScheduleModel::data(const QModelIndex& index, int role) const
{
    // A cell that is too narrow shows the whole of its text when it is pointed at.
    if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::ToolTipRole))
        return {};
    const ScheduledOrder& order = m_orders[std::size_t(index.row())];
    QString text = shownText(order.name);
    if (index.column() == ScheduleDate)
        text = scheduleTimeText(order.time);
    else if (index.column() == Action)
        text = scheduleActionText(order.action);
    return role == Qt::ToolTipRole ? text.toHtmlEscaped() : text;
}

QVariant ScheduleModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    static constexpr quint32 Headings[]
        = {text::ColumnServiceName, text::ColumnScheduleDate, text::ColumnAction};
    if (orientation != Qt::Horizontal || section < 0 || section >= ColumnCount)
        return {};
    if (role == Qt::TextAlignmentRole)
        return int(Qt::AlignLeft | Qt::AlignVCenter);
    return role == Qt::DisplayRole ? loadText(Headings[section]) : QVariant();
}

} // namespace quoril
