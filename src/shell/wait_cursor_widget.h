#pragma once

#include <QList>
#include <QtGlobal>

namespace quoril {

/// Shows a cursor everywhere for as long as it lives; of several the one made last that still lives. They
/// may end in any order: a box can outlast the wait that it came up over. For the main thread.
class CursorWhile
{
public:
    Q_DISABLE_COPY_MOVE(CursorWhile)

protected:
    explicit CursorWhile(Qt::CursorShape shape);
    ~CursorWhile();

private:
    static QList<const CursorWhile*> g_alive;
    const Qt::CursorShape m_shape;
};

/// For a step that can take more than a second.
class WaitCursor : public CursorWhile
{
public:
    WaitCursor() : CursorWhile(Qt::WaitCursor) { }
};

/// For a dialog in the middle of such a step: what waits meanwhile is the program for the person.
class ArrowCursor : public CursorWhile
{
public:
    ArrowCursor() : CursorWhile(Qt::ArrowCursor) { }
};

} // namespace quoril
