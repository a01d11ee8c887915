#pragma once

#include "printing/panel_pages.h"

#include <QPainter>

class QPrinter;

namespace quoril {

/// Paints pages on a printer, a PDF file or a preview. The units of the geometry are kept on every device; on
/// paper that is too low for a full page all lines are drawn smaller, so that none is lost.
class PagePainter : public PrintTarget, public PageCanvas
{
public:
    /// The printer is not owned, and has its settings before the first page.
    explicit PagePainter(QPrinter& printer) : m_printer(printer) { }
    ~PagePainter() override;

    /// The document begins with its first page, so that one without pages leaves nothing behind.
    bool startDocument(const QString& name) override;
    bool startPage() override;
    void textOut(QPoint place, const QString& text) override;
    void endPage() override { }
    void endDocument() override;
    void drawText(const QRect& place, const QString& text) override;

private:
    QPrinter& m_printer;
    QPainter m_painter;
};

} // namespace quoril
