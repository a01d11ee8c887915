#pragma once

#include <QSize>

class QWidget;

namespace quoril {

/// Gives `window`, which is not shown yet, a size in device-independent pixels without its frame; less where
/// it would be larger with a frame than the free part of its screen. Whether it has the whole size.
bool resizeToScreen(QWidget& window, QSize size);

} // namespace quoril
