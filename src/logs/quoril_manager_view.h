#pragma once

#include "logs/panel_table.h"
#include "printing/printer_dialogs.h"

#include <QTableView>

#include <array>
#include <memory>

namespace quoril {

class PanelTableModel;
class ServiceInfo;
class TypeAhead;

/// The right-hand pane: one list that shows the logs or the configuration of the selected instance. What it
/// shows is a snapshot of the time of the call.
class CQuorilManagerView : public QTableView
{
    Q_OBJECT

public:
    /// Forgets the column widths of both tables, which all views of the process share.
    explicit CQuorilManagerView(QWidget* parent = nullptr);
    ~CQuorilManagerView() override;

    /// Rebuilds the list with the instance's logs, the last row in sight and current. Settles the log period
    /// of the record.
    void ShowLogTable(ServiceInfo& service);
    /// Rebuilds the list with the columns of the log table and no row.
    void ShowEmptyLogTable();
    /// Rebuilds the list with the instance's configuration.
    void ShowConfigurationTable(const ServiceInfo& service);
    /// Removes all columns and rows without storing widths.
    void ClearList();
    /// Keeps the present column widths for the next table of the same kind.
    void SaveColumnWidths();

    /// Copies the selected rows to the clipboard as text, in list order. With no row in the list nothing
    /// happens, with none selected the clipboard gets an empty text.
    void copy();

    /// Asks how to print, over the window or another one, then prints all rows or the selected ones. Failures
    /// are reported to the person. False if the person left the question.
    bool PrintPanel(QWidget* over = nullptr);
    /// Prepares a preview of the rows that stand here now; the information stays in use until the next one.
    bool OnPreparePrinting(CPrintInfo& info);
    /// Draws the page of the preview that is due.
    void OnDraw(PageCanvas& canvas);
    PrinterDialogs& printing() { return m_printing; }

    /// What the list shows. The reference is valid until the list is rebuilt.
    const PanelTable& table() const;
    /// The selected rows in list order.
    std::vector<RowRange> selectedRanges() const;

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyboardSearch(const QString& text) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    bool viewportEvent(QEvent* event) override;
    void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;

private:
    static constexpr std::size_t RememberedColumns = 32;
    using WidthTable = std::array<int, RememberedColumns>;
    static constexpr int Unknown = -1;

    void showTable(PanelTable table, WidthTable& widths);
    void goToRow(int row);
    QPoint placeOfCurrentRow();
    bool showCutText(const QPoint& position, const QPoint& screenPosition);

    static WidthTable g_configuration_widths;
    static WidthTable g_log_widths;

    PanelTableModel* m_model;
    std::unique_ptr<TypeAhead> m_typeAhead;
    PrinterDialogs m_printing;
    CPrintInfo* m_print_info = nullptr;
};

} // namespace quoril
