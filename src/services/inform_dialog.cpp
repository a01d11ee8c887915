#include "services/inform_dialog.h"

#include "platform/clock.h"
#include "platform/machine.h"
#include "resources/text_ids.h"

#include <QKeyEvent>
#include <QLabel>
#include <QVBoxLayout>

namespace quoril {

namespace {
constexpr quint32 ReadySecond = 1000;
constexpr int SmallestWidth = 340;
constexpr int Margin = 24;
} // namespace

InformDialog::InformDialog(const QString& text, quint32 periodMilliseconds, QWidget* parent)
    : TemplateDialog(inform_dialog::Id, parent)
    , m_period(periodMilliseconds)
    , m_text(new QLabel(text, this))
{
    // There is nothing to press, so there is no close button in the title bar either.
    setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint);
    m_text->setObjectName(QString::number(inform_dialog::Text));
    m_text->setTextFormat(Qt::PlainText);
    m_text->setAlignment(Qt::AlignCenter);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(Margin, Margin, Margin, Margin);
    layout->addWidget(m_text);
    setMinimumWidth(SmallestWidth);

    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &InformDialog::OnTimer);
}

void InformDialog::OnInitDialog()
{
    m_timer.start(machine().clock().timerInterval(m_period));
    m_waiting.emplace();
    announceText(*m_text);
}

void InformDialog::done(int result)
{
    m_waiting.reset();
    m_timer.stop();
    TemplateDialog::done(result);
}

void InformDialog::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        accept();
    else
        TemplateDialog::keyPressEvent(event);
}

void InformDialog::OnTimer()
{
    m_text->setText(loadText(text::Ready));
    announceText(*m_text);
    repaint();
    machine().clock().sleep(ReadySecond);
    accept();
}

} // namespace quoril
