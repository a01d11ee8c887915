#include "logs/panel_row_painter.h"

#include "logs/panel_table_model.h"
#include "platform/terminal_text.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QPainter>
#include <QStyle>

#include <cmath>

namespace quoril {

namespace {

// Longer texts reach beyond every screen, and laying them out takes time.
constexpr qsizetype DrawnUnits = 2048;

QColor mixed(const QColor& one, const QColor& other, qreal share)
{
    const auto channel = [share](int left, int right) { return qRound(left * (1 - share) + right * share); };
    return QColor(channel(one.red(), other.red()), channel(one.green(), other.green()),
        channel(one.blue(), other.blue()));
}

/// The colour's luminance, 0 to 1, as contrast is measured by it.
double luminance(const QColor& colour)
{
    const auto channel = [](double share) {
        return share <= 0.04045 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * channel(colour.redF()) + 0.7152 * channel(colour.greenF())
        + 0.0722 * channel(colour.blueF());
}

/// Black or white, whichever has the higher contrast: at least 4.5 to 1 on every ground.
QColor readableOn(const QColor& ground)
{
    constexpr double EqualContrast = 0.179;
    return luminance(ground) < EqualContrast ? Qt::white : Qt::black;
}

/// The row of the cell is the current one of a list with the focus.
bool isCurrentRow(const QWidget* widget, const QModelIndex& index)
{
    const auto* const list = qobject_cast<const QAbstractItemView*>(widget);
    return list && list->hasFocus() && list->currentIndex().row() == index.row();
}

} // namespace

QSize PanelRowPainter::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    const QString text = shownText(index.data(Qt::DisplayRole).toString().left(DrawnUnits));
    const int width = option.fontMetrics.horizontalAdvance(text) + 2 * margin(option.widget);
    return {width, option.fontMetrics.height()};
}

int PanelRowPainter::margin(const QWidget* widget)
{
    const QStyle* const style = widget ? widget->style() : QApplication::style();
    return style->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, widget) + 2;
}

void PanelRowPainter::paint(
    QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QColor ground = index.data(Qt::BackgroundRole).value<QColor>();
    const bool selected = option.state.testFlag(QStyle::State_Selected);
    const bool active = option.state.testFlag(QStyle::State_Active);
    const QColor highlight
        = option.palette.color(active ? QPalette::Active : QPalette::Inactive, QPalette::Highlight);
    if (selected)
        ground = mixed(ground, highlight, 0.5);

    painter->save();
    painter->fillRect(option.rect, ground);
    painter->setClipRect(option.rect, Qt::IntersectClip);
    if (selected) {
        painter->setPen(highlight);
        painter->drawLine(option.rect.bottomLeft(), option.rect.bottomRight());
    }
    const int gap = margin(option.widget);
    const QRect place = option.rect.adjusted(gap, 0, -gap, 0);
    const QString text = shownText(index.data(Qt::DisplayRole).toString().left(DrawnUnits));
    painter->setFont(option.font);
    painter->setPen(readableOn(ground));
    const bool cut = option.fontMetrics.horizontalAdvance(text) > place.width();
    const bool endMatters = index.data(PanelTableModel::EndMattersRole).toBool();
    painter->drawText(place, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
        cut ? option.fontMetrics.elidedText(text, endMatters ? Qt::ElideLeft : Qt::ElideRight, place.width())
            : text);
    if (isCurrentRow(option.widget, index)) {
        painter->setPen(readableOn(ground));
        painter->drawLine(option.rect.topLeft(), option.rect.topRight());
        painter->drawLine(option.rect.bottomLeft(), option.rect.bottomRight());
    }
    painter->restore();
}

} // namespace quoril
