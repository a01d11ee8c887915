#pragma once

#include "report/app_mapi.h"

#include <QString>

namespace quoril {

class ServiceInfo;

/// The headline values of a service, as the report shows them.
QString configSummary(const ServiceInfo& service);

/// What a report is asked for beside what the Mail command asks for.
struct ReportRequest
{
    bool describesExecutables = false; ///< executables and drivers too
    bool removesLeftovers = false; ///< of a report that was not written, too
};

/// The Mail command: gathers everything about the service, then asks for the file and writes the report. A
/// service without a name, "no service", has a report with empty values. True if the report has all its parts
/// and nothing failed on the way, though nobody may have chosen a file.
bool mailProblemReport(const ServiceInfo& service, UserPrompts& prompts, appMAPI::AskFileName askFileName,
    ReportRequest request = {});

} // namespace quoril
