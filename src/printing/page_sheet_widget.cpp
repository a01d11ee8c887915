#include "printing/page_sheet_widget.h"

#include "printing/page_painter.h"

#include <QPaintEvent>

#include <cmath>

namespace quoril {

namespace {

constexpr int PageGap = 12;
constexpr double ZoomStep = 1.5;
/// Longer texts reach beyond every paper, and laying them out takes time.
constexpr qsizetype LongestLine = 2048;

class SheetCanvas : public PageCanvas
{
public:
    explicit SheetCanvas(QPainter& painter) : m_painter(painter) { }
    void drawText(const QRect& place, const QString& text) override
    {
        m_painter.save();
        m_painter.setClipRect(place, Qt::IntersectClip);
        m_painter.drawText(place, Qt::AlignLeft | Qt::AlignTop, text.left(LongestLine));
        m_painter.restore();
    }

private:
    QPainter& m_painter;
};

} // namespace

PageSheet::PageSheet(const QPageLayout& paper, PreviewDialog::DrawPage draw)
    : m_paper(paper)
    , m_draw(std::move(draw))
{
}

void PageSheet::showPages(int first, int count, int last)
{
    m_first = first;
    m_count = count;
    m_last = last;
    fit();
}

void PageSheet::setZoom(int step)
{
    m_zoom = step;
    fit();
}

void PageSheet::setRoom(QSize room)
{
    m_room = room;
    fit();
}

QSizeF PageSheet::paperSize() const
{
    const QSizeF inches = m_paper.fullRect(QPageLayout::Inch).size();
    const QSizeF most((m_room.width() - PageGap) / double(m_count) - PageGap, m_room.height() - 2 * PageGap);
    return inches.scaled(most.expandedTo({1, 1}), Qt::KeepAspectRatio) * std::pow(ZoomStep, m_zoom);
}

void PageSheet::fit()
{
    const QSize pages = paperSize().toSize();
    setMinimumSize((pages.width() + PageGap) * m_count + PageGap, pages.height() + 2 * PageGap);
    update();
}

void PageSheet::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    painter.fillRect(event->rect(), palette().color(QPalette::Dark));
    const QSizeF paper = paperSize();
    const int shown = std::min(m_count, m_last - m_first + 1);
    double left = (width() - shown * paper.width() - (shown - 1) * PageGap) / 2;
    const double dotsPerInch = paper.width() / m_paper.fullRect(QPageLayout::Inch).width();
    for (int page = m_first; page < m_first + shown; ++page, left += paper.width() + PageGap) {
        const QRectF sheet(QPointF(left, (height() - paper.height()) / 2), paper);
        if (!event->rect().intersects(sheet.toAlignedRect()))
            continue;
        painter.save();
        painter.fillRect(sheet, Qt::white);
        painter.setClipRect(sheet);
        painter.translate(sheet.topLeft());
        setPageUnits(painter, m_paper, dotsPerInch);
        painter.setPen(Qt::black);
        SheetCanvas canvas(painter);
        m_draw(page, canvas);
        painter.restore();
    }
}

} // namespace quoril
