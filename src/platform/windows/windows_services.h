#pragma once

#include "platform/services.h"

namespace quoril {

/// The service control manager of the system that the program runs on. Rights and error numbers are passed on
/// as they are.
class WindowsServiceControl : public ServiceControl
{
public:
    Result<std::unique_ptr<ServiceManager>> openManager(quint32 access) override;
};

} // namespace quoril
