#include "services/service_management_dialog.h"

#include "platform/clock.h"
#include "platform/machine.h"
#include "platform/services.h"
#include "resources/text_ids.h"
#include "services/prompt_dialogs.h"
#include "services/service_info.h"
#include "shell/wait_cursor_widget.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>
#include <array>

namespace quoril {

namespace ids = manage_dialog;

namespace {

constexpr quint32 RefreshPeriod = 4000;
constexpr quint32 StartBox = 7000;
constexpr quint32 StopBox = 3000;
constexpr int GroupMargin = 8;

struct StartTypeChoice
{
    quint32 textId;
    qint32 startType;
};

constexpr std::array<StartTypeChoice, 3> StartTypes{{
    {text::StartAutomatic, start_type::Automatic},
    {text::StartManual, start_type::Manual},
    {text::StartDisabled, start_type::Disabled},
}};

/// Texts by `Status`.
constexpr std::array<quint32, 4> StatusTexts{
    text::StatusUnknown, text::StatusPaused, text::StatusStarted, text::StatusStopped};

QString statusText(qint32 status)
{
    const bool known = status > 0 && std::size_t(status) < StatusTexts.size();
    return loadText(StatusTexts[known ? std::size_t(status) : 0]);
}

} // namespace

ServiceManagementDialog::ServiceManagementDialog(QWidget* frame)
    : TemplateDialog(ids::Id, frame)
    , m_frame(frame)
    , m_name(readOnlyEdit(ids::Name))
    , m_description(readOnlyEdit(ids::Description))
    , m_path(readOnlyEdit(ids::Path))
    , m_startType(comboBox(ids::StartupType))
    , m_apply(button(ids::Apply))
    , m_start(button(ids::Start))
    , m_stop(button(ids::Stop))
    , m_status(new QLabel(this))
{
    m_status->setObjectName(QString::number(ids::Status));
    m_status->setTextFormat(Qt::PlainText);
    buildLayout();
    connectControls();
}

void ServiceManagementDialog::buildLayout()
{
    auto* layout = new QGridLayout(this);
    layout->setColumnStretch(1, 1);
    int row = 0;
    const auto addField = [&](quint32 labelId, QWidget* field, int columns) {
        layout->addWidget(label(labelId, field), row, 0);
        layout->addWidget(field, row++, 1, 1, columns);
    };
    addField(ids::NameLabel, m_name, 2);
    addField(ids::DescriptionLabel, m_description, 2);
    addField(ids::PathLabel, m_path, 2);
    addField(ids::StartupTypeLabel, m_startType, 1);
    layout->addWidget(m_apply, row - 1, 2);

    QGroupBox* startStop = groupBox(ids::StartStopGroup);
    auto* buttons = new QHBoxLayout(startStop);
    buttons->addWidget(m_start);
    buttons->addWidget(m_stop);

    QGroupBox* console = groupBox(ids::StatusGroup);
    auto* status = new QHBoxLayout(console);
    status->addWidget(label(ids::StatusLabel, m_status));
    status->addWidget(m_status, 1);
    // Room for the longest text, so that nothing moves when the status changes.
    int widest = 0;
    for (const quint32 id : StatusTexts)
        widest = std::max(widest, m_status->fontMetrics().horizontalAdvance(loadText(id)));
    m_status->setMinimumWidth(widest);

    auto* groups = new QHBoxLayout;
    groups->setContentsMargins(0, GroupMargin, 0, GroupMargin);
    groups->addWidget(startStop, 1);
    groups->addWidget(console, 1);
    layout->addLayout(groups, row++, 0, 1, 3);
    layout->setRowStretch(row++, 1);
    layout->addWidget(closingButtons(ids::Ok, ids::Cancel), row, 0, 1, 3);

    QWidget* previous = m_name;
    for (QWidget* next :
        std::initializer_list<QWidget*>{m_description, m_path, m_startType, m_apply, m_start, m_stop}) {
        setTabOrder(previous, next);
        previous = next;
    }
}

void ServiceManagementDialog::connectControls()
{
    connect(m_start, &QPushButton::clicked, this, &ServiceManagementDialog::OnStart);
    connect(m_stop, &QPushButton::clicked, this, &ServiceManagementDialog::OnStop);
    connect(m_apply, &QPushButton::clicked, this, &ServiceManagementDialog::OnApply);
    // What the person picks counts, the entry that is shown already too: a start type outside the list is
    // shown as the first entry.
    connect(m_startType, &QComboBox::activated, this, &ServiceManagementDialog::OnTypeSelected);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &ServiceManagementDialog::OnTimer);
}

void ServiceManagementDialog::SetService(ServiceInfo& service)
{
    m_service = &service;
    showInEdit(*m_name, service.Name);
    showInEdit(*m_description, service.EmulationType);
    showInEdit(*m_path, service.ImagePath);
}

void ServiceManagementDialog::OnInitDialog()
{
    m_timer.start(machine().clock().timerInterval(RefreshPeriod));
    if (m_service->QueryState() != 0)
        showFailure();
    showStatus();
    m_startType->clear();
    for (const auto& [textId, startType] : StartTypes)
        m_startType->addItem(loadText(textId), startType);
    m_startType->setCurrentIndex(std::max(0, m_startType->findData(m_service->StartType)));
    enable(*m_apply, false);
}

void ServiceManagementDialog::accept()
{
    if (TypeChanged)
        OnApply();
    TemplateDialog::accept();
}

void ServiceManagementDialog::done(int result)
{
    m_timer.stop();
    TemplateDialog::done(result);
}

void ServiceManagementDialog::OnTimer()
{
    // Started anew, the timer goes on firing behind a box that this very tick shows.
    m_timer.start();
    const bool reportFailure = m_errorBoxes == 0;
    refresh(reportFailure);
    if (reportFailure && m_timer.isActive())
        m_timer.start();
}

void ServiceManagementDialog::OnStart()
{
    const WaitCursor waiting;
    DialogPrompts prompts(this);
    if (m_service->StartPrerequisites(prompts) == ServiceInfo::PrerequisiteNotRunning) {
        showFailure();
        return;
    }
    const int started = m_service->StartNow();
    prompts.inform(loadText(text::WaitStarted), StartBox);
    if (started != 0)
        showFailure();
    else
        refresh(true);
}

void ServiceManagementDialog::OnStop()
{
    const WaitCursor waiting;
    const int stopped = m_service->StopNow();
    DialogPrompts(this).inform(loadText(text::WaitStopped), StopBox);
    if (stopped != 0)
        showFailure();
    else
        refresh(true);
}

void ServiceManagementDialog::OnTypeSelected(int index)
{
    TypeChanged = true;
    NewStartType = m_startType->itemData(index).toInt();
    enable(*m_apply, true);
}

void ServiceManagementDialog::OnApply()
{
    enable(*m_apply, false);
    const WaitCursor waiting;
    DialogPrompts prompts(this);
    const int changed = m_service->SetStartType(NewStartType, prompts);
    TypeChanged = false;
    if (changed != 0)
        showFailure();
}

void ServiceManagementDialog::refresh(bool reportFailure)
{
    if (m_service->QueryState() != 0 && reportFailure)
        showFailure();
    showStatus();
    repaint();
    if (m_frame)
        m_frame->setUpdatesEnabled(true);
}

void ServiceManagementDialog::showStatus()
{
    const qint32 status = m_service->Status;
    if (m_status->text() != statusText(status)) {
        m_status->setText(statusText(status));
        announceText(*m_status);
    }
    constexpr qint32 paused = 1;
    constexpr qint32 started = 2;
    constexpr qint32 stopped = 3;
    if (status == paused)
        return;
    enable(*m_start, status != started);
    enable(*m_stop, status != stopped);
}

void ServiceManagementDialog::showFailure()
{
    ++m_errorBoxes;
    showErrorBox(isVisible() ? this : m_frame, m_service->Message);
    --m_errorBoxes;
}

} // namespace quoril
