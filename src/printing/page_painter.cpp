#include "printing/page_painter.h"

#include <QFile>
#include <QFontDatabase>
#include <QFontMetrics>
#include <QPrinter>

#include <algorithm>

namespace quoril {

namespace {

/// Nine points: the line step leaves a third of the height between the lines.
constexpr int FontUnits = 75;
constexpr double LastLineEnd = page_geometry::Top + page_geometry::LinesPerPage * page_geometry::LineStep;

/// Where the lines go on the paper: the geometry's units times the scale, and down by the offset, in units.
struct Placement
{
    double scale = 1;
    double down = 0;
};

Placement placementOn(const QPageLayout& paper)
{
    using namespace page_geometry;
    const auto units = [](double inches) { return inches * UnitsPerInch; };
    const QMarginsF margins = paper.margins(QPageLayout::Inch);
    const QPageLayout::Unit unit = paper.units();
    const QMarginsF least
        = QPageLayout(paper.pageSize(), paper.orientation(), {}, unit, paper.minimumMargins())
              .margins(QPageLayout::Inch);
    const double top = units(std::max(margins.top(), least.top()));
    const double bottom
        = units(paper.fullRect(QPageLayout::Inch).height() - std::max(margins.bottom(), least.bottom()));
    Placement placement;
    placement.scale = std::min(1.0, bottom / LastLineEnd);
    if (Top * placement.scale < top) {
        placement.scale = std::min(placement.scale, (bottom - top) / (LastLineEnd - Top));
        placement.down = top - Top * placement.scale;
    }
    return placement;
}

/// Whether the file can be written. One that was not there before is not left behind.
bool isWritable(const QString& name)
{
    QFile file(name);
    const bool isNew = !file.exists();
    const bool opened = file.open(QIODevice::WriteOnly | QIODevice::Append);
    if (opened && isNew)
        file.remove();
    return opened;
}

} // namespace

void setPageUnits(QPainter& painter, const QPageLayout& paper, double dotsPerInch)
{
    const double unit = dotsPerInch / page_geometry::UnitsPerInch;
    const Placement placement = placementOn(paper);
    painter.translate(0, placement.down * unit);
    painter.scale(unit * placement.scale, unit * placement.scale);
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setPixelSize(FontUnits);
    painter.setFont(font);
}

PagePainter::~PagePainter()
{
    if (!m_painter.isActive())
        return;
    m_printer.abort();
    m_painter.end();
}

bool PagePainter::startDocument(const QString& name)
{
    m_printer.setDocName(name);
    const QString file = m_printer.outputFileName();
    return m_printer.isValid() && (file.isEmpty() || isWritable(file));
}

PageStart PagePainter::startPage()
{
    if (m_painter.isActive() ? !m_printer.newPage() : !m_painter.begin(&m_printer))
        return m_painter.isActive() ? PageStart::PageFailed : PageStart::DocumentFailed;
    m_painter.resetTransform();
    setPageUnits(m_painter, m_printer.pageLayout(), m_printer.resolution());
    return PageStart::Started;
}

void PagePainter::textOut(QPoint place, const QString& text)
{
    m_painter.drawText(place + QPoint(0, m_painter.fontMetrics().ascent()), text);
}

void PagePainter::endDocument()
{
    if (m_painter.isActive())
        m_painter.end();
}

} // namespace quoril
