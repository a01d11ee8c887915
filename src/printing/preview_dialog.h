#pragma once

#include "printing/panel_pages.h"
#include "services/template_dialog.h"

#include <QPageLayout>

#include <functional>

class QScrollArea;

namespace quoril {

class PageSheet;

/// The preview: one page or two beside each other, whole or larger. A page is drawn when it is looked at, so
/// that it costs the same however many there are.
class PreviewDialog : public TemplateDialog
{
public:
    /// Draws the page, from 1 on.
    using DrawPage = std::function<void(int page, PageCanvas& canvas)>;
    /// Prints after asking how; false if the person left the question.
    using Print = std::function<bool(QWidget& over)>;

    PreviewDialog(const QPageLayout& paper, int pages, const DrawPage& draw, Print print, QWidget* parent);

private:
    QPushButton* addButton(quint32 id, void (PreviewDialog::*action)());
    void connectKeys();
    void goTo(int page);
    void nextPage();
    void previousPage();
    void togglePages();
    void zoomIn();
    void zoomOut();
    void print();
    void showState();
    void enableOr(QPushButton& button, bool enabled);

    int m_pages;
    Print m_print;
    PageSheet* m_sheet;
    QScrollArea* m_area;
    QLabel* m_place;
    QPushButton* m_next = nullptr;
    QPushButton* m_previous = nullptr;
    QPushButton* m_twoPages = nullptr;
    QPushButton* m_zoomIn = nullptr;
    QPushButton* m_zoomOut = nullptr;
};

} // namespace quoril
