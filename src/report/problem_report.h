#pragma once

#include "report/app_mapi.h"

#include <QString>

namespace quoril {

class ServiceInfo;

/// The headline values of a service, as the report shows them.
QString configSummary(const ServiceInfo& service);

/// The Mail command: gathers everything about the service, then asks for the file and writes the report. A
/// service without a name, "no service", has a report with empty values. Executables and drivers are
/// described where that is wanted. True if nothing failed on the way, though nobody may have chosen a file.
bool mailProblemReport(const ServiceInfo& service, UserPrompts& prompts, appMAPI::AskFileName askFileName,
    bool executablesWanted = false);

} // namespace quoril
