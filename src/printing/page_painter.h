#pragma once

#include "printing/panel_pages.h"

#include <QPainter>

class QPageLayout;
class QPrinter;

namespace quoril {

/// Lets the painter, which stands at the corner of the paper, draw in the units of the geometry, and gives it
/// the font. Where a full page would not fit between the margins, all lines are drawn smaller.
void setPageUnits(QPainter& painter, const QPageLayout& paper, double dotsPerInch);

/// Paints pages on a printer or a PDF file.
class PagePainter : public PrintTarget
{
public:
    /// The printer is not owned, and has its settings before the first page.
    explicit PagePainter(QPrinter& printer) : m_printer(printer) { }
    ~PagePainter() override;

    /// The document begins with its first page, so that one without pages leaves nothing behind.
    bool startDocument(const QString& name) override;
    PageStart startPage() override;
    void textOut(QPoint place, const QString& text) override;
    void endPage() override { }
    void endDocument() override;

private:
    QPrinter& m_printer;
    QPainter m_painter;
};

} // namespace quoril
