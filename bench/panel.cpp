// Shows an emulator log in the panel of an off-screen window, as one process:
//     panel FOLDER      FOLDER/panel.log is written by make_emulator_log.py
// It prints how long the load takes by itself, how long until the view holds the table, what the first paint
// takes then, the memory that the panel takes beyond the text that it keeps, the time to scroll by one page,
// and that from the command of the preview to its first page.
#include "logs/log_table.h"
#include "logs/quoril_log.h"
#include "logs/quoril_manager_view.h"
#include "platform/tree/tree_machine.h"
#include "printing/printer_dialogs.h"
#include "services/service_info.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QScrollBar>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

using namespace quoril;
using namespace Qt::StringLiterals;

/// Counts the paintings of a widget.
class PaintCounter : public QObject
{
public:
    explicit PaintCounter(QWidget* widget) { widget->installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override
    {
        count += event->type() == QEvent::Paint;
        return false;
    }

    int count = 0;
};

/// Closes a dialog as soon as it has been painted, and keeps the time until then.
class FirstSight : public QObject
{
public:
    FirstSight() { QApplication::instance()->installEventFilter(this); }
    bool eventFilter(QObject* object, QEvent* event) override
    {
        QWidget* const dialog = QApplication::activeModalWidget();
        if (event->type() == QEvent::Paint && dialog && nanoseconds < 0
            && dialog->isAncestorOf(qobject_cast<QWidget*>(object))) {
            nanoseconds = 0;
            QTimer::singleShot(0, dialog, [this, dialog] {
                nanoseconds = m_timer.nsecsElapsed();
                dialog->close();
            });
        }
        return false;
    }
    void start() { m_timer.start(); }

    qint64 nanoseconds = -1;

private:
    QElapsedTimer m_timer;
};

double milliseconds(const QElapsedTimer& timer)
{
    return double(timer.nsecsElapsed()) / 1e6;
}

/// The memory of the process that is resident, in bytes.
qint64 residentMemory()
{
    QFile file(u"/proc/self/statm"_s);
    constexpr qint64 PageSize = 4096;
    return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').value(1).toLongLong() * PageSize : 0;
}

/// The median of the times of some pages, or a negative number if one of them was not painted.
double pageTime(CQuorilManagerView& view, PaintCounter& paints)
{
    constexpr int Pages = 101;
    std::vector<double> times;
    for (int page = 0; page < Pages; ++page) {
        const int before = paints.count;
        QElapsedTimer timer;
        timer.start();
        view.verticalScrollBar()->triggerAction(QAbstractSlider::SliderPageStepSub);
        QApplication::processEvents();
        times.push_back(milliseconds(timer));
        if (paints.count == before)
            return -1;
    }
    std::nth_element(times.begin(), times.begin() + Pages / 2, times.end());
    return times[Pages / 2];
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    const QString folder = QFile::decodeName(argc > 1 ? argv[1] : "");
    const qint64 fileSize = QFileInfo(folder + u"/panel.log"_s).size();
    if (fileSize == 0) {
        std::fprintf(stderr, "usage: panel FOLDER, with a panel.log in it\n");
        return 2;
    }
    TreeMachine machine(folder);
    const ScopedMachine inForce(machine);
    ServiceInfo service;
    service.LogFile = u"C:\\panel.log"_s;
    CQuorilManagerView view;
    view.resize(1024, 768);
    view.show();
    QApplication::processEvents();
    PaintCounter paints(view.viewport());

    const qint64 memoryBefore = residentMemory();
    QElapsedTimer timer;
    timer.start();
    view.ShowLogTable(service);
    const double shown = milliseconds(timer);
    QApplication::processEvents();
    const double painted = milliseconds(timer);
    const qint64 memory = residentMemory() - memoryBefore;
    if (paints.count == 0)
        return 1;
    const double page = pageTime(view, paints);
    FirstSight preview;
    preview.start();
    view.printing().preview([&view](CPrintInfo& info) { return view.OnPreparePrinting(info); },
        [&view](PageCanvas& canvas) { view.OnDraw(canvas); }, [](QWidget&) { return false; }, &view);
    // The load by itself comes last, so that it takes no part in the memory.
    timer.start();
    const PanelTable table = buildLogTable(service);
    const double load = milliseconds(timer);

    // The generator's text has no unit above 0xFF, so that it is kept in half the bytes of the file.
    const qsizetype rows = view.table().rowCount();
    std::printf(
        "%lld rows\nload %.1f ms\nload into the view %.1f ms\nfirst paint %.1f ms\n"
        "memory a row %.1f bytes\nmemory a row beyond the text %.1f bytes\npage %.2f ms\npreview %.1f ms\n",
        static_cast<long long>(rows), load, shown, painted - shown, double(memory) / double(rows),
        double(memory - fileSize / 2) / double(rows), page, double(preview.nanoseconds) / 1e6);
    return page < 0 || preview.nanoseconds <= 0 || table.rowCount() != rows ? 1 : 0;
}
