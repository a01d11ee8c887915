#include "access/security_dialog.h"

#include "access/idle_lock.h"
#include "resources/text_ids.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QVBoxLayout>

namespace quoril {

namespace ids = security_dialog;

namespace {
constexpr int SmallestWidth = 320;
}

SecurityDialog::SecurityDialog(QWidget* parent)
    : TemplateDialog(ids::Id, parent)
    , m_choices(comboBox(ids::LockTime))
{
    QGroupBox* const settings = groupBox(ids::SettingsGroup);
    m_choices->setAccessibleName(settings->title());
    for (const LockChoice& choice : g_lock_choices) {
        if (choice.index >= 0)
            m_choices->insertItem(choice.index, loadText(choice.textId), choice.milliseconds);
    }
    m_choices->setMaxVisibleItems(m_choices->count());
    (new QVBoxLayout(settings))->addWidget(m_choices);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(settings);
    layout->addStretch(1);
    layout->addWidget(closingButtons(ids::Ok, ids::Cancel));
    setMinimumWidth(SmallestWidth);
    m_choices->setFocus();
}

void SecurityDialog::OnInitDialog()
{
    m_choices->setCurrentIndex(m_choices->findData(m_lock_time));
}

void SecurityDialog::accept()
{
    m_lock_time = m_choices->currentData().toUInt();
    TemplateDialog::accept();
}

} // namespace quoril
