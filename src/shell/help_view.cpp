#include "shell/help_view.h"

#include "resources/resource_module.h"
#include "resources/text_ids.h"
#include "shell/focus_frame_widget.h"
#include "shell/screen_fit_widget.h"

#include <QFile>
#include <QHBoxLayout>
#include <QRegularExpression>
#include <QShortcut>
#include <QSplitter>
#include <QTextBrowser>
#include <QTextDocumentFragment>
#include <QTreeWidget>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr QSize HelpWindowSize(860, 600);
constexpr int ContentsWidth = 240;
constexpr int SectionRole = Qt::UserRole;

QString readHelp(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return u"<p>"_s + loadText(text::HelpNotFound).toHtmlEscaped() + u"</p><p>"_s + path.toHtmlEscaped()
            + u"</p>"_s;
    return QString::fromUtf8(file.readAll());
}

/// Headings with an id: level, id and text.
const QRegularExpression& headingPattern()
{
    static const QRegularExpression pattern(QStringLiteral("<h([1-3])\\s+id=\"([^\"]+)\"[^>]*>(.*?)</h\\1>"),
        QRegularExpression::DotMatchesEverythingOption | QRegularExpression::CaseInsensitiveOption);
    return pattern;
}

/// A dark theme that leaves links as they are, dark blue, hides them.
QString linkStyle(const QPalette& palette)
{
    constexpr int Dark = 128;
    const bool isHidden = palette.color(QPalette::Base).lightness() < Dark
        && palette.color(QPalette::Link).lightness() < Dark;
    return isHidden ? u"a { color: #6cb4ff; }"_s : QString();
}

QString plainText(const QString& html)
{
    return QTextDocumentFragment::fromHtml(html).toPlainText().simplified();
}

} // namespace

CHelpView::CHelpView(const QString& helpFile, QWidget* parent)
    : QWidget(parent, Qt::Window)
    , m_contents(new QTreeWidget)
    , m_text(new QTextBrowser)
{
    setWindowTitle(loadText(text::HelpTitle));
    m_contents->setHeaderLabel(loadText(text::HelpContents));
    m_contents->setRootIsDecorated(true);
    m_text->setOpenExternalLinks(false);
    m_text->document()->setDocumentMargin(16);
    m_text->document()->setDefaultStyleSheet(linkStyle(palette()));

    auto* splitter = new QSplitter(this);
    splitter->setChildrenCollapsible(false);
    splitter->addWidget(m_contents);
    splitter->addWidget(m_text);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({ContentsWidth, HelpWindowSize.width() - ContentsWidth});
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(splitter);

    showFocusFrame(*m_contents);
    showFocusFrame(*m_text);
    connect(new QShortcut(QKeySequence(Qt::Key_Escape), this), &QShortcut::activated, this, &QWidget::close);

    const QString html = readHelp(helpFile);
    fillContents(html);
    // A list that gets the focus without a current item takes its first one, and the text would go there.
    m_contents->setCurrentItem(m_contents->topLevelItem(0));
    // The browser knows anchors by name only.
    QString anchored = html;
    m_text->setHtml(
        anchored.replace(headingPattern(), QStringLiteral("<h\\1><a name=\"\\2\"></a>\\3</h\\1>")));
    connect(m_contents, &QTreeWidget::currentItemChanged, this, [this](const QTreeWidgetItem* item) {
        if (item)
            m_text->scrollToAnchor(item->data(0, SectionRole).toString());
    });
    resizeToScreen(*this, HelpWindowSize);
}

void CHelpView::fillContents(const QString& html)
{
    QTreeWidgetItem* parents[4] = {};
    auto headings = headingPattern().globalMatch(html);
    while (headings.hasNext()) {
        const QRegularExpressionMatch heading = headings.next();
        const int level = heading.captured(1).toInt();
        QTreeWidgetItem* above = nullptr;
        for (int i = level - 1; i > 0 && !above; --i)
            above = parents[i];
        auto* item = above ? new QTreeWidgetItem(above) : new QTreeWidgetItem(m_contents);
        item->setText(0, plainText(heading.captured(3)));
        item->setData(0, SectionRole, heading.captured(2));
        for (int i = level; i < 4; ++i)
            parents[i] = nullptr;
        parents[level] = item;
    }
    m_contents->expandAll();
}

void CHelpView::open()
{
    show();
    setWindowState(windowState() & ~Qt::WindowMinimized);
    raise();
    activateWindow();
}

void CHelpView::goTo(const QString& link)
{
    m_text->scrollToAnchor(link.section(u'#', 1));
}

QString CHelpView::link(quint32 command, const QString& name, const QString& prompt)
{
    return u"<p><b>"_s + name.toHtmlEscaped() + u"</b></p><p>"_s + prompt.toHtmlEscaped()
        + u"</p><p><a href=\"#command-"_s + QString::number(command) + u"\">"_s
        + loadText(text::HelpTitle).toHtmlEscaped() + u"</a></p>"_s;
}

} // namespace quoril
