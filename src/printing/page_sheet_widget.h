#pragma once

#include "printing/preview_dialog.h"

#include <QWidget>

namespace quoril {

/// The pages of a preview that are looked at, on a desk in the colours of the desktop.
class PageSheet : public QWidget
{
public:
    PageSheet(const QPageLayout& paper, PreviewDialog::DrawPage draw);

    /// From this page on, one page or two. A page after the last one stays away.
    void showPages(int first, int count, int last);
    /// 0 fits whole pages into the room, each step above makes them half as large again.
    void setZoom(int step);
    /// The room that is seen without scrolling.
    void setRoom(QSize room);

    int first() const { return m_first; }
    int count() const { return m_count; }
    int zoom() const { return m_zoom; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QSizeF paperSize() const; ///< in pixels, at the present zoom
    void fit();

    QPageLayout m_paper;
    PreviewDialog::DrawPage m_draw;
    int m_first = 1;
    int m_count = 1;
    int m_last = 1;
    int m_zoom = 0;
    QSize m_room;
};

} // namespace quoril
