#include "logs/type_ahead_widget.h"

#include <QAbstractItemView>
#include <QApplication>

namespace quoril {

namespace {
constexpr int SliceMilliseconds = 20;
constexpr int RowsBetweenLooks = 128;
} // namespace

TypeAhead::TypeAhead(QAbstractItemView& view) : m_view(view)
{
    m_slices.callOnTimeout(this, [this] { searchSlice(); });
    // Whoever goes elsewhere meanwhile stays there.
    connect(view.selectionModel(), &QItemSelectionModel::currentChanged, this, [this] { m_slices.stop(); });
    connect(view.model(), &QAbstractItemModel::modelAboutToBeReset, this, [this] { m_slices.stop(); });
}

void TypeAhead::type(const QString& text)
{
    const bool goesOn = m_lastKey.isValid() && m_lastKey.elapsed() <= QApplication::keyboardInputInterval();
    m_lastKey.start();
    // The same key again and again goes from row to row.
    const bool again = goesOn && m_text == text;
    m_text = goesOn && !again ? m_text + text : text;
    const int rows = m_view.model()->rowCount();
    const int current = qMax(0, m_view.currentIndex().row());
    m_row = goesOn && !again ? current : current + 1;
    m_rowsLeft = rows;
    searchSlice();
}

void TypeAhead::searchSlice()
{
    const QAbstractItemModel& model = *m_view.model();
    QElapsedTimer spent;
    spent.start();
    m_slices.stop();
    for (; m_rowsLeft > 0; --m_rowsLeft, ++m_row) {
        if (m_rowsLeft % RowsBetweenLooks == 0 && spent.elapsed() >= SliceMilliseconds) {
            m_slices.start(0);
            return;
        }
        const QModelIndex row = model.index(m_row % model.rowCount(), 0);
        if (row.data().toString().startsWith(m_text, Qt::CaseInsensitive)) {
            m_view.setCurrentIndex(row);
            return;
        }
    }
}

} // namespace quoril
