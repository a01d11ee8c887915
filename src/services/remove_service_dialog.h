#pragma once

#include "services/template_dialog.h"

namespace quoril {

/// Names the service that is about to be removed. Remove accepts it.
class RemoveServiceDialog : public TemplateDialog
{
public:
    RemoveServiceDialog(const QString& serviceName, QWidget* parent);
};

} // namespace quoril
