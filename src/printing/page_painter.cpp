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
constexpr int PageUnits = page_geometry::Top + page_geometry::LinesPerPage * page_geometry::LineStep;

/// The part of the device's unit that a unit of the geometry takes.
double unitScale(const QPrinter& printer)
{
    const double dots = printer.resolution();
    const double paperUnits
        = printer.pageLayout().fullRect(QPageLayout::Inch).height() * page_geometry::UnitsPerInch;
    return dots / page_geometry::UnitsPerInch * std::min(1.0, paperUnits / PageUnits);
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

bool PagePainter::startPage()
{
    const bool started = m_painter.isActive() ? m_printer.newPage() : m_painter.begin(&m_printer);
    if (!started)
        return false;
    const double scale = unitScale(m_printer);
    m_painter.resetTransform();
    m_painter.scale(scale, scale);
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setPixelSize(FontUnits);
    m_painter.setFont(font);
    return true;
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

void PagePainter::drawText(const QRect& place, const QString& text)
{
    m_painter.setClipRect(place);
    m_painter.drawText(place, Qt::AlignLeft | Qt::AlignTop, text);
    m_painter.setClipping(false);
}

} // namespace quoril
