#pragma once

#include <QStyledItemDelegate>

namespace quoril {

/// Paints a cell of the panel: the row's colour under the text, also of a selected row, where it is mixed
/// with the selection's colour. The text is black or white, whichever reads better. Lines above and below
/// mark the current row while the list has the focus.
class PanelRowPainter : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(
        QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    /// Room for the whole text.
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    /// Pixels between a cell's edges and its text.
    static int margin(const QWidget* widget);
};

} // namespace quoril
