#pragma once

#include "formats/error.h"
#include "services/service_info.h"

#include <functional>

namespace quoril {

class CQuorilManagerDoc;
class RegistryKey;

/// What a scan reads of each instance.
enum class CatalogueScan
{
    Full,
    WithoutDevices ///< the device tables stay empty, which is most of the work
};

/// Walks the services of the registry and adds a record for each emulator instance, in the registry's order.
/// Nothing is reported: what can't be read stays empty, and a service that can't be read is skipped. Fails
/// only if the services key can't be opened, with the reason.
Status scanInstances(CatalogueScan scan, const std::function<void(const ServiceInfo&)>& add);

/// The same with all of each instance, into the document.
Status ScanServices(CQuorilManagerDoc& document);

/// Makes a relative LogFile absolute with HomeDir. One leading ".\" or "..\" (or with slashes) is taken off;
/// a second one stays.
void MakeLogPathAbsolute(ServiceInfo& service);

} // namespace quoril
