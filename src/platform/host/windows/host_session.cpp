#include "platform/host/host_session.h"

#include "platform/windows/windows_session.h"

namespace quoril {

std::unique_ptr<Session> openHostSession()
{
    return std::make_unique<WindowsSession>();
}

} // namespace quoril
