#pragma once

#include "logs/panel_table.h"

#include <QPoint>
#include <QRect>
#include <QString>

#include <vector>

namespace quoril {

/// Where the lines stand on a page, in the device units of a printer of 600 dots per inch, counted from the
/// upper left corner of the paper.
namespace page_geometry {
inline constexpr int UnitsPerInch = 600;
inline constexpr int LinesPerPage = 62;
inline constexpr int Left = 450;
inline constexpr int Top = 300;
inline constexpr int LineStep = 100;
/// Where the preview's text ends.
inline constexpr int Right = 6000;
inline constexpr int Bottom = 9000;
} // namespace page_geometry

/// The row as a line: the texts of the first three columns, each followed by three blanks.
QString printedLine(const PanelTable& table, qsizetype row);

/// The pages that so many rows take; 0 for none.
int pageCount(qsizetype rows);

enum class PageStart
{
    Started,
    DocumentFailed, ///< the first page found that the document can't begin
    PageFailed
};

/// Pages on their way to a printer or a file. What a failed call leaves behind is dropped with the object.
class PrintTarget
{
public:
    virtual ~PrintTarget() = default;

    virtual bool startDocument(const QString& name) = 0;
    virtual PageStart startPage() = 0;
    /// One line of text with its upper left corner at the place.
    virtual void textOut(QPoint place, const QString& text) = 0;
    virtual void endPage() = 0;
    virtual void endDocument() = 0;
};

enum class PrintOutcome
{
    Printed,
    NothingToPrint, ///< the document was left unfinished
    DocumentNotStarted,
    PageNotStarted
};

/// What the person chose in the print dialog.
struct PrintRequest
{
    bool selectionOnly = false;
    int copies = 1;
    std::vector<RowRange> selection; ///< in list order
};

/// Prints the rows of the table, or those of the selection, as one document: each copy begins on a new page.
PrintOutcome printRows(
    const PanelTable& table, const PrintRequest& request, const QString& documentName, PrintTarget& target);

/// What the preview knows of its pages while it asks for them.
struct CPrintInfo
{
    int maximumPage = 1;
    int currentPage = 1;
};

/// One page of the preview.
class PageCanvas
{
public:
    virtual ~PageCanvas() = default;
    /// Text within a rectangle, from its upper left corner on; what lies outside is cut off.
    virtual void drawText(const QRect& place, const QString& text) = 0;
};

/// Draws the page, from 1 on; nothing for a page after the last one.
void DrawPage(const PanelTable& table, int page, PageCanvas& canvas);

} // namespace quoril
