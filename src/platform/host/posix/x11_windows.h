#pragma once

#include "platform/session.h"

#include <QStringView>

#include <memory>

namespace quoril {

/// The top-level window of exactly that title on the X display of the environment; null without a display,
/// without the X client library, or without such a window.
std::unique_ptr<ForeignWindow> findX11Window(QStringView title);

} // namespace quoril
