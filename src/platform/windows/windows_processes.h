#pragma once

#include "platform/processes.h"

namespace quoril {

/// Processes of the system that the program runs on.
class WindowsProcesses : public Processes
{
public:
    Result<std::unique_ptr<Process>> create(QStringView applicationName, QStringView commandLine) override;
    Status canRun(QStringView program) const override;
};

} // namespace quoril
