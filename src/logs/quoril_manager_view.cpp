#include "logs/quoril_manager_view.h"

#include "config/configuration_table.h"
#include "logs/coded_message_dialog.h"
#include "logs/log_table.h"
#include "logs/panel_row_painter.h"
#include "logs/panel_table_model.h"
#include "logs/type_ahead_widget.h"
#include "printing/page_painter.h"
#include "resources/resource_module.h"
#include "resources/text_ids.h"
#include "services/prompt_dialogs.h"
#include "shell/system_monitor.h"
#include "shell/wait_cursor_widget.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QHeaderView>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QPrinter>
#include <QScrollBar>
#include <QTextDocument>
#include <QToolTip>

#include <algorithm>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr int LeastColumnWidth = 4;
constexpr int ConfigurationColumns = 2;

} // namespace

CQuorilManagerView::WidthTable CQuorilManagerView::g_configuration_widths;
CQuorilManagerView::WidthTable CQuorilManagerView::g_log_widths;

CQuorilManagerView::CQuorilManagerView(QWidget* parent)
    : QTableView(parent)
    , m_model(new PanelTableModel(this))
{
    g_configuration_widths.fill(Unknown);
    g_log_widths.fill(Unknown);

    setModel(m_model);
    setItemDelegate(new PanelRowPainter(this));
    setShowGrid(false);
    setWordWrap(false);
    setCornerButtonEnabled(false);
    setTabKeyNavigation(false);
    setEditTriggers(NoEditTriggers);
    setSelectionBehavior(SelectRows);
    setSelectionMode(ExtendedSelection);
    setHorizontalScrollMode(ScrollPerPixel);
    setVerticalScrollMode(ScrollPerItem);

    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setMinimumSectionSize(1);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 4);

    horizontalHeader()->setSectionsMovable(true);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setMinimumSectionSize(LeastColumnWidth);
    m_typeAhead = std::make_unique<TypeAhead>(*this);
}

CQuorilManagerView::~CQuorilManagerView() = default;

void CQuorilManagerView::ShowLogTable(ServiceInfo& service)
{
    showTable(buildLogTable(service), g_log_widths);
    // The bar below takes its room first, or it would cover the last row.
    updateGeometries();
    goToRow(m_model->rowCount() - 1);
    scrollToBottom();
}

void CQuorilManagerView::ShowEmptyLogTable()
{
    showTable(buildEmptyLogTable(), g_log_widths);
}

void CQuorilManagerView::ShowConfigurationTable(const ServiceInfo& service)
{
    showTable(buildConfigurationTable(service), g_configuration_widths);
    goToRow(0);
}

void CQuorilManagerView::goToRow(int row)
{
    selectionModel()->setCurrentIndex(m_model->index(row, 0), QItemSelectionModel::NoUpdate);
}

void CQuorilManagerView::ClearList()
{
    m_model->setTable({});
}

void CQuorilManagerView::SaveColumnWidths()
{
    const int columns = horizontalHeader()->count();
    WidthTable& widths = columns == ConfigurationColumns ? g_configuration_widths : g_log_widths;
    for (int column = 0; column < std::min(columns, int(RememberedColumns)); ++column)
        widths[std::size_t(column)] = columnWidth(column);
}

void CQuorilManagerView::showTable(PanelTable table, WidthTable& widths)
{
    SaveColumnWidths();
    // Without columns for a moment, the header forgets in which order they had been dragged.
    ClearList();
    m_model->setTable(std::move(table));
    for (int column = 0; column < m_model->columnCount(); ++column) {
        int& width = widths[std::size_t(column)];
        if (width == Unknown)
            width = this->table().column(column).firstWidth(viewport()->width());
        setColumnWidth(column, width);
    }
}

const PanelTable& CQuorilManagerView::table() const
{
    return m_model->table();
}

std::vector<RowRange> CQuorilManagerView::selectedRanges() const
{
    std::vector<RowRange> ranges;
    for (const QItemSelectionRange& range : selectionModel()->selection())
        ranges.push_back({range.top(), range.bottom()});
    std::sort(ranges.begin(), ranges.end(),
        [](const RowRange& left, const RowRange& right) { return left.first < right.first; });
    // The same row can lie in several ranges, one for each of its cells.
    std::vector<RowRange> merged;
    for (const RowRange& range : ranges) {
        if (!merged.empty() && range.first <= merged.back().last + 1)
            merged.back().last = std::max(merged.back().last, range.last);
        else
            merged.push_back(range);
    }
    return merged;
}

void CQuorilManagerView::copy()
{
    if (table().rowCount() == 0 || table().columnCount() == 0)
        return;
    const Result<QString> copied = [this] {
        const WaitCursor waiting;
        return clipboardText(table(), selectedRanges());
    }();
    if (copied)
        QGuiApplication::clipboard()->setText(*copied);
    else
        DialogPrompts(window()).message(FormatSystemError(copied.errorNumber()));
}

bool CQuorilManagerView::PrintPanel(QWidget* over)
{
    constexpr int ErrorSeverity = 3;
    QWidget* const parent = over ? over : window();
    PrintRequest request;
    if (!m_printing.askHowToPrint(request, parent))
        return false;
    // Only now: rows may come and go while the dialog is open.
    request.selection = selectedRanges();
    if (!m_printing.hasPrinter()) {
        ShowCodedMessage(u"0200003E"_s, loadText(text::NoDefaultPrinter), ErrorSeverity, parent);
        return true;
    }
    const PrintOutcome outcome = [&] {
        const WaitCursor waiting;
        PagePainter painter(m_printing.printer());
        return printRows(table(), request, loadText(text::PrintDocumentName), painter);
    }();
    if (outcome == PrintOutcome::DocumentNotStarted)
        ShowCodedMessage(u"0200003F"_s, loadText(text::PrinterNotInitialized), ErrorSeverity, parent);
    else if (outcome == PrintOutcome::PageNotStarted)
        ShowCodedMessage(u"02000040"_s, loadText(text::PageNotStarted), ErrorSeverity, parent);
    return true;
}

bool CQuorilManagerView::OnPreparePrinting(CPrintInfo& info)
{
    if (table().rowCount() > 0)
        info.maximumPage = pageCount(table().rowCount());
    m_print_info = &info;
    return m_printing.printer().isValid();
}

void CQuorilManagerView::OnDraw(PageCanvas& canvas)
{
    DrawPage(table(), m_print_info ? m_print_info->currentPage : 1, canvas);
}

void CQuorilManagerView::contextMenuEvent(QContextMenuEvent* event)
{
    const std::vector<MenuEntry> popups = activeResources().menu(menu::List);
    if (table().rowCount() == 0 || popups.empty())
        return;
    auto* const popup = new QMenu(this);
    popup->setAttribute(Qt::WA_DeleteOnClose);
    for (const MenuEntry& entry : popups.front().entries) {
        QAction* const action = popup->addAction(entry.caption);
        if (entry.command == command::CopySelection)
            connect(action, &QAction::triggered, this, &CQuorilManagerView::copy);
    }
    popup->popup(event->reason() == QContextMenuEvent::Keyboard ? placeOfCurrentRow() : event->globalPos());
}

QPoint CQuorilManagerView::placeOfCurrentRow()
{
    if (currentIndex().isValid())
        scrollTo(currentIndex());
    const QRect row = visualRect(currentIndex()).intersected(viewport()->rect());
    return viewport()->mapToGlobal(QPoint(PanelRowPainter::margin(this), row.bottom() + 1));
}

void CQuorilManagerView::currentChanged(const QModelIndex& current, const QModelIndex& previous)
{
    QTableView::currentChanged(current, previous);
    // The mark of the current row goes through all of its cells.
    for (const QModelIndex& index : {current, previous})
        viewport()->update(0, rowViewportPosition(index.row()), viewport()->width(), rowHeight(index.row()));
}

void CQuorilManagerView::keyboardSearch(const QString& text)
{
    m_typeAhead->type(text);
}

void CQuorilManagerView::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Copy)) {
        copy();
        event->accept();
        return;
    }
    QTableView::keyPressEvent(event);
}

QModelIndex CQuorilManagerView::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers)
{
    // The rows are the items: keys that go from cell to cell elsewhere move in the rows or scroll.
    const int column = std::max(0, currentIndex().column());
    QScrollBar* const sideways = horizontalScrollBar();
    switch (action) {
    case MoveHome:
        return m_model->index(0, column);
    case MoveEnd:
        return m_model->index(m_model->rowCount() - 1, column);
    case MoveLeft:
        sideways->triggerAction(QAbstractSlider::SliderSingleStepSub);
        return currentIndex();
    case MoveRight:
        sideways->triggerAction(QAbstractSlider::SliderSingleStepAdd);
        return currentIndex();
    default:
        return QTableView::moveCursor(action, modifiers);
    }
}

void CQuorilManagerView::scrollTo(const QModelIndex& index, ScrollHint hint)
{
    // The last column is wider than the window; a click into it leaves the view where it is sideways.
    const int sideways = horizontalScrollBar()->value();
    QTableView::scrollTo(index, hint);
    horizontalScrollBar()->setValue(sideways);
}

bool CQuorilManagerView::viewportEvent(QEvent* event)
{
    if (event->type() == QEvent::ToolTip) {
        auto* const help = static_cast<QHelpEvent*>(event);
        if (!showCutText(help->pos(), help->globalPos()))
            QToolTip::hideText();
        return true;
    }
    return QTableView::viewportEvent(event);
}

bool CQuorilManagerView::showCutText(const QPoint& position, const QPoint& screenPosition)
{
    const QModelIndex index = indexAt(position);
    if (!index.isValid())
        return false;
    const QString text = index.data().toString();
    const QRect cell = visualRect(index);
    const int gap = PanelRowPainter::margin(this);
    const QRect seen = cell.intersected(viewport()->rect());
    const int needed = fontMetrics().horizontalAdvance(text) + 2 * gap;
    if (seen.left() == cell.left() && needed <= seen.width())
        return false;
    QToolTip::showText(screenPosition, Qt::convertFromPlainText(text), viewport(), cell);
    return true;
}

} // namespace quoril
