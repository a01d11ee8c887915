#pragma once

#include <QWidget>

class QTextBrowser;
class QTreeWidget;

namespace quoril {

/// The help window: the text of one HTML file on the right and its headings as a table of contents on the
/// left.
class CHelpView : public QWidget
{
    Q_OBJECT

public:
    /// helpFile is a host path. A file that can't be read shows a line that says so.
    explicit CHelpView(const QString& helpFile, QWidget* parent = nullptr);

    /// Shows the window, or brings it forward.
    void open();

    /// Goes to the section of a link "#id".
    void goTo(const QString& link);

    /// The text of context help for a command: its name, its prompt and the link to its section.
    static QString link(quint32 command, const QString& name, const QString& prompt);

private:
    void fillContents(const QString& html);

    QTreeWidget* m_contents;
    QTextBrowser* m_text;
};

} // namespace quoril
