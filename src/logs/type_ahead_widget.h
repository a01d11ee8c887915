#pragma once

#include <QElapsedTimer>
#include <QString>
#include <QTimer>

class QAbstractItemView;

namespace quoril {

/// Finds the row whose first cell begins with what is typed, from the current row on and round to it. A long
/// list is searched in slices between the events, so that no key waits for it.
class TypeAhead : public QObject
{
public:
    /// The view has its model, and outlives this.
    explicit TypeAhead(QAbstractItemView& view);

    /// Takes the text of a key: what comes soon after another goes on with it.
    void type(const QString& text);
    bool isSearching() const { return m_slices.isActive(); }

private:
    void searchSlice();

    QAbstractItemView& m_view;
    QString m_text;
    QElapsedTimer m_lastKey;
    QTimer m_slices;
    int m_row = 0;
    int m_rowsLeft = 0;
};

} // namespace quoril
