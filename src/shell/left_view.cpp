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
#include <QHelpEvent>
#include <QMenu>
#include <QPainter>
#include <QStyle>
#include <QStyledItemDelegate>
#include <QTextDocument>
#include <QToolTip>

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
    void (CMainFrame::*handler)();
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

/// Pixels between an item's edge and its text.
int textMargin(const QWidget& view)
{
    return view.style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, &view) + 1;
}

/// Shows a name as it is spelt: no mark in it may turn it into another's.
class NameDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QString displayText(const QVariant& value, const QLocale&) const override
    {
        return shownText(value.toString());
    }
    /// The whole name where it is cut.
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
        const QModelIndex& index) override
    {
        if (event->type() != QEvent::ToolTip || !index.isValid())
            return QStyledItemDelegate::helpEvent(event, view, option, index);
        const QRect seen = option.rect.intersected(view->viewport()->rect());
        if (sizeHint(option, index).width() > seen.width())
            QToolTip::showText(event->globalPos(), Qt::convertFromPlainText(displayText(index.data(), {})),
                view->viewport(), option.rect);
        else
            QToolTip::hideText();
        return true;
    }
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        const int margin = textMargin(*option.widget);
        return {option.fontMetrics.horizontalAdvance(displayText(index.data(), {})) + 2 * margin,
            option.fontMetrics.height() + RowPadding};
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
        = new QTreeWidgetItem(this, {computerName ? *computerName : loadText(text::LocalComputerMissed)});
    root->setData(0, ItemDataRole, RootData);
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
        m_frame->setServiceCommands(false);
        m_frame->ClearPanel();
        m_document.SetTitle(loadText(text::SelectService));
        if (CQuorilManagerView* const panel = m_frame->GetRightView()) {
            panel->SaveColumnWidths();
            panel->ShowEmptyLogTable();
        }
        return;
    }
    const ServiceInfo* const service = m_document.findService(item->text(0));
    if (!service)
        return;
    m_frame->setServiceCommands(true);
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
        [this](PageCanvas& canvas) { OnDraw(canvas); },
        [this](QWidget& over) { return panel()->PrintPanel(&over); }, window());
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
    label.setWidth(fontMetrics().horizontalAdvance(shownText(item->text(0))) + 2 * textMargin(*this));
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
    auto* const popup = new QMenu(this);
    popup->setAttribute(Qt::WA_DeleteOnClose);
    for (const MenuEntry& entry : popups.front().entries) {
        if (entry.command == 0)
            popup->addSeparator();
        else
            connect(popup->addAction(entry.caption), &QAction::triggered, this,
                [this, id = entry.command] { runPopupCommand(id); });
    }
    popup->popup(screenPosition);
}

void CLeftView::runPopupCommand(quint32 id)
{
    for (const PopupCommand& command : PopupCommands) {
        if (command.id == id)
            (m_frame->*command.handler)();
    }
}

void CLeftView::drawBranches(QPainter* painter, const QRect& rect, const QModelIndex& index) const
{
    // Lines, and a button with plus or minus, in every style.
    const bool isRoot = !index.parent().isValid();
    const int middle = rect.right() - indentation() / 2;
    const int centre = rect.center().y();
    painter->save();
    painter->setPen(QPen(palette().color(QPalette::Disabled, QPalette::Text), 1, Qt::DotLine));
    painter->drawLine(middle, centre, rect.right(), centre);
    const bool isLast = index.row() + 1 == index.model()->rowCount(index.parent());
    if (!isRoot)
        painter->drawLine(middle, rect.top(), middle, isLast ? centre : rect.bottom());
    if (index.model()->hasChildren(index)) {
        constexpr int Half = 4;
        const QRect box(middle - Half, centre - Half, 2 * Half, 2 * Half);
        painter->fillRect(box, palette().base());
        painter->setPen(palette().color(QPalette::Text));
        painter->drawRect(box);
        painter->drawLine(box.left() + 2, centre, box.right() - 1, centre);
        if (!isExpanded(index))
            painter->drawLine(middle, box.top() + 2, middle, box.bottom() - 1);
    }
    painter->restore();
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
        scrollToItem(item);
        const QRect place = visualItemRect(item).intersected(viewport()->rect());
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
