#include "services/remove_service_dialog.h"

#include "resources/text_ids.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

namespace quoril {

namespace ids = remove_dialog;

RemoveServiceDialog::RemoveServiceDialog(const QString& serviceName, QWidget* parent)
    : TemplateDialog(ids::Id, parent)
{
    QLineEdit* name = readOnlyEdit(ids::Name);
    showInEdit(*name, serviceName);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(label(ids::NameLabel, name));
    layout->addWidget(name);
    layout->addStretch();
    layout->addWidget(closingButtons(ids::Remove, ids::Cancel, EnterMeans::Reject));
}

} // namespace quoril
