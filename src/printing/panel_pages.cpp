#include "printing/panel_pages.h"

#include <algorithm>

namespace quoril {

using namespace Qt::StringLiterals;
using namespace page_geometry;

namespace {

constexpr int PrintedColumns = 3;

/// The rows that are printed, in order: ranges of the table.
std::vector<RowRange> printedRows(const PanelTable& table, const PrintRequest& request)
{
    if (request.selectionOnly)
        return request.selection;
    return {{0, table.rowCount() - 1}};
}

/// Puts lines on pages: a page begins with its first line and ends with its last one.
class Pages
{
public:
    explicit Pages(PrintTarget& target) : m_target(target) { }

    PageStart add(const QString& line)
    {
        if (m_lines == 0) {
            if (const PageStart start = m_target.startPage(); start != PageStart::Started)
                return start;
        }
        m_target.textOut({Left, Top + m_lines * LineStep}, line);
        if (++m_lines == LinesPerPage)
            end();
        return PageStart::Started;
    }

    void end()
    {
        if (m_lines > 0)
            m_target.endPage();
        m_lines = 0;
    }

private:
    PrintTarget& m_target;
    int m_lines = 0;
};

PageStart printCopy(const PanelTable& table, const std::vector<RowRange>& rows, PrintTarget& target)
{
    Pages pages(target);
    for (const RowRange& range : rows) {
        for (qsizetype row = range.first; row <= range.last; ++row) {
            const PageStart start = pages.add(printedLine(table, row));
            if (start != PageStart::Started)
                return start;
        }
    }
    pages.end();
    return PageStart::Started;
}

} // namespace

QString printedLine(const PanelTable& table, qsizetype row)
{
    QString line;
    for (int column = 0; column < PrintedColumns; ++column)
        line += table.text(row, column) + u"   "_s;
    return line;
}

int pageCount(qsizetype rows)
{
    return int((rows + LinesPerPage - 1) / LinesPerPage);
}

PrintOutcome printRows(
    const PanelTable& table, const PrintRequest& request, const QString& documentName, PrintTarget& target)
{
    if (!target.startDocument(documentName))
        return PrintOutcome::DocumentNotStarted;
    const std::vector<RowRange> rows = printedRows(table, request);
    for (int copy = 0; copy < request.copies; ++copy) {
        if (table.rowCount() == 0)
            return PrintOutcome::NothingToPrint;
        const PageStart start = printCopy(table, rows, target);
        if (start != PageStart::Started)
            return start == PageStart::PageFailed ? PrintOutcome::PageNotStarted
                                                  : PrintOutcome::DocumentNotStarted;
    }
    target.endDocument();
    return PrintOutcome::Printed;
}

void DrawPage(const PanelTable& table, int page, PageCanvas& canvas)
{
    const qsizetype first = qsizetype(page - 1) * LinesPerPage;
    const qsizetype end = std::min(first + LinesPerPage, table.rowCount());
    for (qsizetype row = first; row < end; ++row) {
        const int top = Top + int(row - first) * LineStep;
        canvas.drawText(QRect(QPoint(Left, top), QPoint(Right - 1, Bottom - 1)), printedLine(table, row));
    }
}

} // namespace quoril
