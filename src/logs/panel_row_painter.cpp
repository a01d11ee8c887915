#include "logs/panel_row_painter.h"

#include "platform/terminal_text.h"

#include <QApplication>
#include <QPainter>
#include <QStyle>

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

QColor readableOn(const QColor& ground)
{
    // Perceived brightness; the black text of the platform stays on every colour of an unselected row.
    const int brightness = (ground.red() * 299 + ground.green() * 587 + ground.blue() * 114) / 1000;
    return brightness < 90 ? Qt::white : Qt::black;
}

} // namespace

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
    painter->drawText(place, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
        cut ? option.fontMetrics.elidedText(text, Qt::ElideRight, place.width()) : text);
    if (option.state.testFlag(QStyle::State_HasFocus)) {
        painter->setPen(QPen(readableOn(ground), 1, Qt::DotLine));
        painter->drawLine(option.rect.topLeft(), option.rect.topRight());
        painter->drawLine(option.rect.bottomLeft(), option.rect.bottomRight());
    }
    painter->restore();
}

} // namespace quoril
