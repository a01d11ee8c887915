#pragma once

#include "formats/error.h"
#include "shell/service_info.h"

namespace quoril {

class CQuorilManagerDoc;
class RegistryKey;

/// What a scan reads of each instance.
enum class CatalogueScan
{
    Full,
    WithoutDevices ///< the device tables stay empty, which is most of the work
};

/// Walks the services of the registry and adds a record for each emulator instance to the document, in the
/// registry's order. Nothing is reported: what can't be read stays empty, and a service that can't be read is
/// skipped. Fails only if the services key can't be opened, with the reason.
Status ScanServices(CQuorilManagerDoc& document, CatalogueScan scan = CatalogueScan::Full);

/// Makes a relative LogFile absolute with HomeDir. One leading ".\" or "..\" (or with slashes) is taken off;
/// a second one stays.
void MakeLogPathAbsolute(ServiceInfo& service);

} // namespace quoril
