#include "shell/left_view.h"

#include "logs/quoril_manager_view.h"
#include "platform/machine.h"
#include "platform/system_info.h"
#include "platform/terminal_text.h"
#include "resources/resource_module.h"
#include "resources/text_ids.h"
#include "shell/main_frame.h"
#include "shell/quoril_manager_doc.h"

#include <QContextMenuEvent>
#include <QMenu>
#include <QStyle>
#include <QStyledItemDelegate>

namespace quoril {

namespace {

constexpr int ItemDataRole = Qt::UserRole;
constexpr int RootData = -1;
constexpr int RowPadding = 6; ///< pixels above and below an item's text, together

bool isNavigation(int key)
{
    return key == Qt::Key_Up || key == Qt::Key_Down || key == Qt::Key_Left || key == Qt::Key_Right
        || key == Qt::Key_Home || key == Qt::Key_End || key == Qt::Key_PageUp || key == Qt::Key_PageDown;
}

struct PopupCommand
{
    quint32 id;
    void (CMainFrame::*handler)(); ///< null: nobody handles the entry yet
};

constexpr PopupCommand PopupCommands[] = {
    {command::TreeManage, &CMainFrame::OnManageService},
    {command::TreeRemove, &CMainFrame::OnRemoveService},
    {command::TreeScheduleStart, &CMainFrame::OnSchedule},
    {command::TreeScheduleStop, &CMainFrame::OnScheduleStop},
    {command::TreeMail, &CMainFrame::OnMail},
    {command::TreePrint, &CMainFrame::OnPrint},
    {command::TreePrintPreview, &CMainFrame::OnPrintPreview},
    {command::TreeConfiguration, &CMainFrame::OnViewConfiguration},
    {command::TreeEventLog, &CMainFrame::OnViewEventLog},
};

/// Shows a name as it is spelt: no mark in it may turn it into another's.
class NameDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QString displayText(const QVariant& value, const QLocale&) const override
    {
        return shownText(value.toString());
    }
};

} // namespace

CLeftView::CLeftView(CQuorilManagerDoc& document, QWidget* parent) : QTreeWidget(parent), m_document(document)
{
    setItemDelegate(new NameDelegate(this));
    setHeaderHidden(true);
    setRootIsDecorated(true);
    setUniformRowHeights(true);
    setSelectionMode(SingleSelection);
    setExpandsOnDoubleClick(true);
    connect(this, &QTreeWidget::itemSelectionChanged, this, &CLeftView::OnSelChanged);
}

void CLeftView::ClearTree()
{
    clear();
}

void CLeftView::FillTree()
{
    ClearTree();
    const auto computerName = machine().systemInfo().computerName();
    auto* root
        = new QTreeWidgetItem(this, {computerName ? *computerName : LoadText(text::LocalComputerMissed)});
    root->setData(0, ItemDataRole, RootData);
    // All rows take their height from the first one.
    root->setSizeHint(0, {0, fontMetrics().height() + RowPadding});
    QList<QTreeWidgetItem*> children;
    children.reserve(qsizetype(m_document.m_services.size()));
    for (const ServiceInfo& service : m_document.m_services) {
        auto* child = new QTreeWidgetItem(QStringList(service.Name));
        child->setData(0, ItemDataRole, int(children.size()));
        children.append(child);
    }
    root->addChildren(children);
    root->setExpanded(true);
    if (m_frame && m_frame->GetRightView())
        m_frame->GetRightView()->ShowEmptyLogTable();
}

QTreeWidgetItem* CLeftView::selectedItem() const
{
    const QList<QTreeWidgetItem*> selected = selectedItems();
    return selected.isEmpty() ? nullptr : selected.first();
}

ServiceInfo& CLeftView::GetSelectedService()
{
    const QTreeWidgetItem* item = selectedItem();
    m_selected_text = item ? item->text(0) : QString();
    ServiceInfo* const service = item ? m_document.findService(m_selected_text) : nullptr;
    return service ? *service : g_no_service;
}

void CLeftView::OnSelChanged()
{
    if (!m_frame || m_frame->m_read_only)
        return;
    const QTreeWidgetItem* const item = selectedItem();
    const QTreeWidgetItem* const root = topLevelItem(0);
    if (!item || !root)
        return;
    if (item == root) {
        m_frame->SetServiceCommands(false);
        m_frame->ClearPanel();
        m_document.SetTitle(LoadText(text::SelectService));
        if (CQuorilManagerView* const panel = m_frame->GetRightView()) {
            panel->SaveColumnWidths();
            panel->ShowEmptyLogTable();
        }
        return;
    }
    const ServiceInfo* const service = m_document.findService(item->text(0));
    if (!service)
        return;
    m_frame->SetServiceCommands(true);
    m_frame->RefreshPanel();
    m_document.SetTitle(service->Name);
}

CQuorilManagerView* CLeftView::panel() const
{
    return m_frame ? m_frame->GetRightView() : nullptr;
}

void CLeftView::OnFilePrintPreview()
{
    if (!panel())
        return;
    panel()->printing().preview([this](CPrintInfo& info) { return OnPreparePrinting(info); },
        [this](PageCanvas& canvas) { OnDraw(canvas); }, window());
}

bool CLeftView::OnPreparePrinting(CPrintInfo& info)
{
    return panel() && panel()->OnPreparePrinting(info);
}

void CLeftView::OnDraw(PageCanvas& canvas)
{
    if (panel())
        panel()->OnDraw(canvas);
}

bool CLeftView::isOnText(QTreeWidgetItem* item, const QPoint& position) const
{
    QRect label = visualItemRect(item);
    const int margin = 2 * (style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, this) + 1);
    label.setWidth(fontMetrics().horizontalAdvance(shownText(item->text(0))) + margin);
    return label.contains(position);
}

void CLeftView::OnRightClick(const QPoint& position)
{
    QTreeWidgetItem* const item = itemAt(position);
    if (!item || item->data(0, ItemDataRole).toInt() < 0 || !isOnText(item, position))
        return;
    setCurrentItem(item);
    showPopup(viewport()->mapToGlobal(position));
}

void CLeftView::showPopup(const QPoint& screenPosition)
{
    const std::vector<MenuEntry> popups = activeResources().menu(menu::Tree);
    if (popups.empty() || !m_frame)
        return;
    QMenu menu(this);
    for (const MenuEntry& entry : popups.front().entries) {
        if (entry.command == 0)
            menu.addSeparator();
        else
            menu.addAction(entry.caption)->setData(entry.command);
    }
    if (const QAction* const chosen = menu.exec(screenPosition))
        runPopupCommand(chosen->data().toUInt());
}

void CLeftView::runPopupCommand(quint32 id)
{
    for (const PopupCommand& command : PopupCommands) {
        if (command.id == id && command.handler)
            (m_frame->*command.handler)();
    }
}

void CLeftView::mousePressEvent(QMouseEvent* event)
{
    // The right button selects nothing by itself: what it does over a service is OnRightClick's business.
    if (event->button() != Qt::RightButton)
        QTreeWidget::mousePressEvent(event);
}

void CLeftView::mouseMoveEvent(QMouseEvent* event)
{
    // The selection changes with a click, not along the way of a drag: each change reads the logs.
    if (!event->buttons().testFlag(Qt::LeftButton))
        QTreeWidget::mouseMoveEvent(event);
}

void CLeftView::contextMenuEvent(QContextMenuEvent* event)
{
    if (event->reason() != QContextMenuEvent::Keyboard) {
        OnRightClick(viewport()->mapFromGlobal(event->globalPos()));
        return;
    }
    if (QTreeWidgetItem* const item = selectedItem()) {
        const QRect place = visualItemRect(item);
        OnRightClick({place.left() + 1, place.center().y()});
    }
}

void CLeftView::keyPressEvent(QKeyEvent* event)
{
    // With nothing selected the first arrow key selects the item that has the focus instead of passing it by.
    if (!selectedItem() && isNavigation(event->key()) && topLevelItem(0)) {
        setCurrentItem(currentItem() ? currentItem() : topLevelItem(0));
        return;
    }
    QTreeWidget::keyPressEvent(event);
}

QItemSelectionModel::SelectionFlags CLeftView::selectionCommand(
    const QModelIndex& index, const QEvent* event) const
{
    // A click beside the items and a click with Control take no selection away.
    if (!index.isValid())
        return QItemSelectionModel::NoUpdate;
    const auto flags = QTreeWidget::selectionCommand(index, event);
    return flags == QItemSelectionModel::NoUpdate
        ? flags
        : QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows;
}

} // namespace quoril
