#include "platform/input_watch.h"

namespace quoril {

// NOLINTNEXTLINE(performance-unnecessary-value-param): who watches keeps it
std::unique_ptr<InputWatch> watchThreadInput(std::function<void()>)
{
    return nullptr;
}

} // namespace quoril
