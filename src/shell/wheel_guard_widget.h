#pragma once

#include <QObject>

namespace quoril {

/// Keeps the wheel from changing what it passes: a list to choose from, a picker or a spin box in any window
/// takes it only while it has the focus, and the wheel gives the focus to nothing.
class WheelGuard : public QObject
{
public:
    /// Watches over all windows of the program. Further calls change nothing.
    static void install();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    using QObject::QObject;
};

} // namespace quoril
