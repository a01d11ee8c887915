#include "platform/input_watch.h"

namespace quoril {

std::unique_ptr<InputWatch> watchThreadInput(std::function<void()>)
{
    return nullptr;
}

} // namespace quoril
