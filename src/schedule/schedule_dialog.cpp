#include "schedule/schedule_dialog.h"

#include "resources/text_ids.h"
#include "schedule/schedule_model.h"
#include "schedule/schedule_time.h"
#include "services/prompt_dialogs.h"
#include "shell/focus_frame_widget.h"

#include <QDateEdit>
#include <QDialogButtonBox>
#include <QEvent>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QTimeEdit>
#include <QTreeView>

#include <algorithm>

namespace quoril {

namespace ids = schedule_dialog;
using namespace Qt::StringLiterals;

namespace {

constexpr quint32 PauseMilliseconds = 2000;
constexpr qint64 NextProposal = 60;
constexpr int ColumnParts = 5;
constexpr int CellMargin = 16;
constexpr int ListRows = 9;

/// The locale's short date, with the whole year: a century can be typed wrong, too.
QString dateFormat(const QLocale& locale)
{
    QString format = locale.dateFormat(QLocale::ShortFormat);
    if (!format.contains(u"yyyy"_s))
        format.replace(u"yy"_s, u"yyyy"_s);
    return format;
}

} // namespace

ScheduleDialog::ScheduleDialog(
    ScheduleTable& table, SelectedService selected, qint64 now, FirstFocus focus, QWidget* parent)
    : TemplateDialog(ids::Id, parent)
    , m_table(table)
    , m_selected(std::move(selected))
    , m_timeValue(now)
    , m_dateValue(localDate(now))
    , m_focus(focus)
    , m_date(new QDateEdit(this))
    , m_time(new QTimeEdit(this))
    , m_setStart(button(ids::SetStart))
    , m_setStop(button(ids::SetStop))
    , m_remove(button(ids::Remove))
    , m_list(new QTreeView(this))
    , m_model(new ScheduleModel(this))
{
    makePickers();
    makeList();
    buildLayout();
    showPickers();
    connect(m_setStart, &QPushButton::clicked, this, &ScheduleDialog::OnSetStart);
    connect(m_setStop, &QPushButton::clicked, this, &ScheduleDialog::OnSetStop);
    connect(m_remove, &QPushButton::clicked, this, &ScheduleDialog::OnRemove);
    connect(m_list->selectionModel(), &QItemSelectionModel::selectionChanged, this,
        &ScheduleDialog::enableRemove);
}

void ScheduleDialog::makePickers()
{
    m_date->setObjectName(QString::number(ids::Date));
    m_date->setCalendarPopup(true);
    m_date->setDisplayFormat(dateFormat(locale()));
    m_time->setObjectName(QString::number(ids::Time));
    m_time->setDisplayFormat(withSeconds(locale().timeFormat(QLocale::ShortFormat)));
    m_time->setWrapping(true);
}

void ScheduleDialog::makeList()
{
    m_list->setObjectName(QString::number(ids::Orders));
    m_list->setModel(m_model);
    m_list->setRootIsDecorated(false);
    m_list->setItemsExpandable(false);
    m_list->setUniformRowHeights(true);
    m_list->setAllColumnsShowFocus(true);
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_list->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_list->setTabKeyNavigation(false);
    m_list->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    m_list->header()->setStretchLastSection(false);
    m_list->header()->setSectionsMovable(false);
    m_list->header()->setMinimumSectionSize(1);
    m_list->installEventFilter(this);
    m_list->viewport()->installEventFilter(this);
    showFocusFrame(*m_list);
    m_list->setAccessibleName(windowTitle());

    // Room for every text but a long name, in each language: the date has two parts of the width, the action
    // one.
    const QFontMetrics metrics = m_list->fontMetrics();
    int part = 0;
    for (const qint32 action : {0, schedule_action::Start, schedule_action::Stop})
        part = std::max(part, metrics.horizontalAdvance(scheduleActionText(action)));
    for (int column = 0; column < ScheduleModel::ColumnCount; ++column) {
        const QString heading = m_model->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
        const int parts = column == ScheduleModel::Action ? 1 : 2;
        part = std::max(part, metrics.horizontalAdvance(heading) / parts);
    }
    part = std::max(part, metrics.horizontalAdvance(u"Wed Mmm 00 00:00:00 0000"_s) / 2);
    const int frame = 2 * m_list->frameWidth() + m_list->style()->pixelMetric(QStyle::PM_ScrollBarExtent) + 4;
    const int rowHeight = metrics.height() + 6;
    m_list->setMinimumSize(ColumnParts * (part + CellMargin) + frame, ListRows * rowHeight);
}

void ScheduleDialog::buildLayout()
{
    auto* layout = new QVBoxLayout(this);

    QGroupBox* const moment = groupBox(ids::MomentGroup);
    auto* pickers = new QHBoxLayout(moment);
    pickers->addWidget(label(ids::DateLabel, m_date));
    pickers->addWidget(m_date);
    pickers->addSpacing(CellMargin);
    pickers->addWidget(label(ids::TimeLabel, m_time));
    pickers->addWidget(m_time);
    pickers->addStretch(1);
    pickers->addWidget(m_setStart);
    pickers->addWidget(m_setStop);
    layout->addWidget(moment);

    layout->addWidget(m_list, 1);

    QDialogButtonBox* const buttons = closingButtons(ids::Ok, ids::Cancel);
    auto* bottom = new QHBoxLayout;
    bottom->addWidget(m_remove);
    bottom->addStretch(1);
    bottom->addWidget(buttons);
    layout->addLayout(bottom);

    QWidget* previous = m_date;
    for (QWidget* next : std::initializer_list<QWidget*>{m_time, m_setStart, m_setStop, m_list, m_remove}) {
        setTabOrder(previous, next);
        previous = next;
    }
}

void ScheduleDialog::OnInitDialog()
{
    buildList();
    (m_focus == FirstFocus::SetStop ? static_cast<QWidget*>(m_setStop) : m_date)->setFocus();
}

bool ScheduleDialog::takePickers()
{
    m_dateValue = m_date->date();
    const std::optional<qint64> time = atTimeOfDay(m_timeValue, m_time->time());
    m_timeValue = time.value_or(m_timeValue);
    return time.has_value();
}

void ScheduleDialog::showPickers()
{
    m_date->setDate(m_dateValue);
    m_time->setTime(localTimeOfDay(m_timeValue));
}

void ScheduleDialog::buildList()
{
    m_model->setOrders(m_table.orders());
    fitColumns();
    enableRemove();
}

void ScheduleDialog::fitColumns()
{
    const int part = m_list->viewport()->width() / ColumnParts;
    m_list->setColumnWidth(ScheduleModel::ServiceName, 2 * part);
    m_list->setColumnWidth(ScheduleModel::ScheduleDate, 2 * part);
    m_list->setColumnWidth(ScheduleModel::Action, part);
}

bool ScheduleDialog::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_list->viewport() && event->type() == QEvent::Resize)
        fitColumns();
    const bool isFirstStep = watched == m_list && event->type() == QEvent::KeyPress
        && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Down && m_model->rowCount() > 0
        && !m_list->selectionModel()->hasSelection();
    if (isFirstStep) {
        // The first key takes the row that the focus stands on instead of passing it by.
        m_list->setCurrentIndex(
            m_list->currentIndex().isValid() ? m_list->currentIndex() : m_model->index(0, 0));
        return true;
    }
    return TemplateDialog::eventFilter(watched, event);
}

void ScheduleDialog::enableRemove()
{
    enable(*m_remove, m_list->selectionModel()->hasSelection());
}

void ScheduleDialog::OnSetStart()
{
    IsStart = true;
    addOrder();
}

void ScheduleDialog::OnSetStop()
{
    IsStart = false;
    addOrder();
}

void ScheduleDialog::addOrder()
{
    if (!takePickers())
        return;
    const std::optional<qint64> moment = scheduleMoment(m_timeValue, m_dateValue);
    if (!moment)
        return;
    const ServiceInfo* const service = m_selected();
    if (!service)
        return;
    m_table.add({*service, *moment, IsStart ? schedule_action::Start : schedule_action::Stop});
    m_timeValue += NextProposal;
    buildList();
    showPickers();
    m_list->scrollToBottom();
    repaint();
    DialogPrompts(this).inform(loadText(text::WaitScheduling), PauseMilliseconds);
}

void ScheduleDialog::OnRemove()
{
    static_cast<void>(takePickers());
    std::vector<OrderId> chosen;
    for (const QModelIndex& row : m_list->selectionModel()->selectedRows())
        chosen.push_back(m_model->idOf(row.row()));
    m_table.remove(chosen);
    buildList();
    showPickers();
    repaint();
}

} // namespace quoril
