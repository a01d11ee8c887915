#include "shell/focus_frame_widget.h"

#include <QAbstractScrollArea>
#include <QEvent>
#include <QPainter>

namespace quoril {

namespace {

class FocusFrame : public QObject
{
public:
    explicit FocusFrame(QAbstractScrollArea& area) : QObject(&area), m_area(area)
    {
        area.installEventFilter(this);
    }

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut)
            m_area.update();
        if (event->type() != QEvent::Paint || !m_area.hasFocus())
            return false;
        static_cast<QObject&>(m_area).event(event);
        QPainter painter(&m_area);
        const QColor mark = m_area.palette().color(QPalette::Highlight);
        for (int line = 0; line < qMax(1, m_area.frameWidth()); ++line) {
            painter.setPen(mark);
            painter.drawRect(m_area.rect().adjusted(line, line, -line - 1, -line - 1));
        }
        return true;
    }

private:
    QAbstractScrollArea& m_area;
};

} // namespace

void showFocusFrame(QAbstractScrollArea& area)
{
    constexpr int Seen = 2;
    area.setFrameShape(QFrame::StyledPanel);
    area.setLineWidth(Seen);
    new FocusFrame(area);
}

} // namespace quoril
