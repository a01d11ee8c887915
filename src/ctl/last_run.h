#pragma once

namespace quoril {

class ServiceInfo;

/// Sets the log period of an instance to its last run: from the last start mark of its log to its last
/// message, or to now while it runs. Without a readable log there is no period.
void takeLastRun(ServiceInfo& service);

} // namespace quoril
