#pragma once

#include "platform/terminal.h"

namespace quoril {

/// What say() needs of each host.

std::FILE* fileOf(StandardStream stream);

/// Says it where somebody can see it.
void sayWithoutStream(QStringView text, StandardStream stream);

} // namespace quoril
