#include "platform/tree/tree_service_host.h"

namespace quoril {

using namespace Qt::StringLiterals;

Status launchServiceHost(TreeMachine&, QStringView service)
{
    return Error{error::NotSupported,
        u"The service "_s + service.toString() + u" lies in a tree, and its programs are not run here"_s};
}

} // namespace quoril
