#pragma once

#include "services/service_info.h"

#include <QTreeWidget>

namespace quoril {

class CMainFrame;
class CQuorilManagerDoc;
class CQuorilManagerView;
class PageCanvas;
struct CPrintInfo;

/// The left pane: one root for the machine and below it one item for each service of the catalogue. Its
/// selection is the current service of every command.
class CLeftView : public QTreeWidget
{
    Q_OBJECT

public:
    explicit CLeftView(CQuorilManagerDoc& document, QWidget* parent = nullptr);

    /// The window that the selection drives; null until it is the application's main window. Not owned.
    void setMainWindow(CMainFrame* frame) { m_frame = frame; }

    void ClearTree();
    /// Rebuilds the tree from the document and selects nothing.
    void FillTree();

    /// The catalogue's record of the selected item, or g_no_service. Valid until the next refresh.
    ServiceInfo& GetSelectedService();

    /// Takes the new selection to flags, panel and caption.
    void OnSelChanged();

    /// Shows the preview of the panel, for which this view stands in.
    void OnFilePrintPreview();
    /// Forwards to the panel; nothing happens without one.
    bool OnPreparePrinting(CPrintInfo& info);
    void OnDraw(PageCanvas& canvas);

    /// Opens the pop-up menu for the item at the position of the viewport, selecting it first. Only over the
    /// text of a service.
    void OnRightClick(const QPoint& position);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void drawBranches(QPainter* painter, const QRect& rect, const QModelIndex& index) const override;
    QItemSelectionModel::SelectionFlags selectionCommand(
        const QModelIndex& index, const QEvent* event) const override;

private:
    CQuorilManagerView* panel() const;
    QTreeWidgetItem* selectedItem() const;
    bool isOnText(QTreeWidgetItem* item, const QPoint& position) const;
    void showPopup(const QPoint& screenPosition);
    void runPopupCommand(quint32 id);

    CQuorilManagerDoc& m_document;
    CMainFrame* m_frame = nullptr;
    QString m_selected_text; ///< text of the item that GetSelectedService last looked at
};

} // namespace quoril
