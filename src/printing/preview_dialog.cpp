#include "printing/preview_dialog.h"

#include "printing/page_sheet_widget.h"
#include "resources/text_ids.h"
#include "shell/focus_frame_widget.h"
#include "shell/screen_fit_widget.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QShortcut>

namespace quoril {

namespace ids = preview_dialog;
using namespace Qt::StringLiterals;

namespace {

constexpr QSize FirstSize(820, 760);
constexpr int MostZoom = 4;

/// The pages in their area, which gives them their room.
class PageArea : public QScrollArea
{
public:
    PageArea(PageSheet* sheet, QWidget* parent) : QScrollArea(parent), m_sheet(*sheet)
    {
        setWidget(sheet);
        setWidgetResizable(true);
    }

protected:
    void resizeEvent(QResizeEvent* event) override
    {
        QScrollArea::resizeEvent(event);
        m_sheet.setRoom(maximumViewportSize());
    }

private:
    PageSheet& m_sheet;
};

} // namespace

PreviewDialog::PreviewDialog(
    const QPageLayout& paper, int pages, const DrawPage& draw, Print print, QWidget* parent)
    : TemplateDialog(ids::Id, parent)
    , m_pages(pages)
    , m_print(std::move(print))
    , m_sheet(new PageSheet(paper, draw))
    , m_area(new PageArea(m_sheet, this))
    , m_place(new QLabel(this))
{
    m_area->setAccessibleName(windowTitle());
    showFocusFrame(*m_area);
    m_place->setObjectName(QString::number(ids::Place));

    auto* const bar = new QHBoxLayout;
    bar->addWidget(addButton(ids::Print, &PreviewDialog::print));
    bar->addWidget(m_next = addButton(ids::Next, &PreviewDialog::nextPage));
    bar->addWidget(m_previous = addButton(ids::Previous, &PreviewDialog::previousPage));
    bar->addWidget(m_twoPages = addButton(ids::TwoPages, &PreviewDialog::togglePages));
    bar->addWidget(m_zoomIn = addButton(ids::ZoomIn, &PreviewDialog::zoomIn));
    bar->addWidget(m_zoomOut = addButton(ids::ZoomOut, &PreviewDialog::zoomOut));
    QPushButton* const close = button(ids::Close);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    bar->addWidget(close);
    bar->addStretch(1);
    bar->addWidget(m_place);
    auto* const layout = new QVBoxLayout(this);
    layout->addLayout(bar);
    layout->addWidget(m_area, 1);

    connectKeys();
    resizeToScreen(*this, FirstSize);
    m_area->setFocus();
    goTo(1);
}

QPushButton* PreviewDialog::addButton(quint32 id, void (PreviewDialog::*action)())
{
    QPushButton* const made = button(id);
    connect(made, &QPushButton::clicked, this, action);
    return made;
}

void PreviewDialog::connectKeys()
{
    const auto key = [this](const QKeySequence& keys, const std::function<void()>& action) {
        connect(new QShortcut(keys, this), &QShortcut::activated, this, action);
    };
    key(Qt::Key_PageDown, [this] { nextPage(); });
    key(Qt::Key_PageUp, [this] { previousPage(); });
    key(Qt::Key_Home, [this] { goTo(1); });
    key(Qt::Key_End, [this] { goTo(m_pages); });
    key(Qt::Key_Plus, [this] { zoomIn(); });
    key(Qt::Key_Minus, [this] { zoomOut(); });
}

void PreviewDialog::goTo(int page)
{
    m_sheet->showPages(qBound(1, page, m_pages), m_sheet->count(), m_pages);
    m_area->verticalScrollBar()->setValue(0);
    showState();
}

void PreviewDialog::nextPage()
{
    if (m_sheet->first() + m_sheet->count() <= m_pages)
        goTo(m_sheet->first() + m_sheet->count());
}

void PreviewDialog::previousPage()
{
    goTo(m_sheet->first() - m_sheet->count());
}

void PreviewDialog::togglePages()
{
    m_sheet->showPages(m_sheet->first(), m_sheet->count() == 1 ? 2 : 1, m_pages);
    showState();
}

void PreviewDialog::zoomIn()
{
    m_sheet->setZoom(qMin(m_sheet->zoom() + 1, MostZoom));
    showState();
}

void PreviewDialog::zoomOut()
{
    m_sheet->setZoom(qMax(m_sheet->zoom() - 1, 0));
    showState();
}

void PreviewDialog::print()
{
    if (m_print(*this))
        accept();
}

void PreviewDialog::enableOr(QPushButton& button, bool enabled)
{
    if (!enabled && button.hasFocus())
        m_area->setFocus();
    button.setEnabled(enabled);
}

void PreviewDialog::showState()
{
    const int first = m_sheet->first();
    enableOr(*m_next, first + m_sheet->count() <= m_pages);
    enableOr(*m_previous, first > 1);
    enableOr(*m_zoomIn, m_sheet->zoom() < MostZoom);
    enableOr(*m_zoomOut, m_sheet->zoom() > 0);
    enableOr(*m_twoPages, m_pages > 1);
    m_twoPages->setText(caption(m_sheet->count() == 1 ? ids::TwoPages : ids::OnePage));
    m_place->setText(caption(ids::PlaceText).arg(first).arg(m_pages));
}

} // namespace quoril
