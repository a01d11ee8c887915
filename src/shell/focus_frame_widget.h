#pragma once

class QAbstractScrollArea;

namespace quoril {

/// Paints the frame of a list, tree or text in the highlight's colour while it has the focus, which most
/// styles leave unmarked.
void showFocusFrame(QAbstractScrollArea& area);

} // namespace quoril
