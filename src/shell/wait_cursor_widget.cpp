#include "shell/wait_cursor_widget.h"

#include <QApplication>

namespace quoril {

QList<const CursorWhile*> CursorWhile::g_alive;

CursorWhile::CursorWhile(Qt::CursorShape shape) : m_shape(shape)
{
    // Where nothing waits each control keeps its own arrow.
    if (shape == Qt::ArrowCursor && g_alive.isEmpty())
        return;
    if (g_alive.isEmpty())
        QApplication::setOverrideCursor(shape);
    else
        QApplication::changeOverrideCursor(shape);
    g_alive.append(this);
}

CursorWhile::~CursorWhile()
{
    if (!g_alive.removeOne(this))
        return;
    if (g_alive.isEmpty())
        QApplication::restoreOverrideCursor();
    else
        QApplication::changeOverrideCursor(g_alive.last()->m_shape);
}

} // namespace quoril
