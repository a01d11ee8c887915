#pragma once

#include "logs/panel_table.h"

namespace quoril {

class ServiceInfo;

/// The configuration of an instance as the panel shows it: what is set of its fixed settings, then its SCSI,
/// MSCP and other devices, each with its value.
PanelTable buildConfigurationTable(const ServiceInfo& service);

} // namespace quoril
