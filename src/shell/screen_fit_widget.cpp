#include "shell/screen_fit_widget.h"

#include <QScreen>
#include <QStyle>
#include <QWidget>

namespace quoril {

bool resizeToScreen(QWidget& window, QSize size)
{
    // The frame is known once the window is shown; the style's frames within a window come close to it.
    const int border = window.style()->pixelMetric(QStyle::PM_MdiSubWindowFrameWidth);
    const int caption = window.style()->pixelMetric(QStyle::PM_TitleBarHeight);
    const QSize room = window.screen()->availableSize() - QSize(2 * border, caption + 2 * border);
    window.resize(size.boundedTo(room));
    return size.boundedTo(room) == size;
}

} // namespace quoril
