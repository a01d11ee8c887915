#pragma once

#include "schedule/schedule_table.h"
#include "services/template_dialog.h"

#include <QDate>

#include <functional>

class QDateEdit;
class QTimeEdit;
class QTreeView;

namespace quoril {

class ScheduleModel;

/// Shows the orders of the table, adds starts and stops for the selected service, and removes orders. Each
/// change is made at once; OK and Cancel take nothing back. The list is what the table held at the last
/// change that was made here: the worker's doings show with the next one.
class ScheduleDialog : public TemplateDialog
{
    Q_OBJECT

public:
    /// The service that an order is made for, asked for at that moment; null adds nothing.
    using SelectedService = std::function<const ServiceInfo*()>;

    /// The control that has the focus when the dialog opens.
    enum class FirstFocus
    {
        Date,
        SetStop
    };

    /// The table has to outlive the dialog. Both pickers stand at the moment now, in seconds since 1970 UTC.
    ScheduleDialog(ScheduleTable& table, SelectedService selected, qint64 now,
        FirstFocus focus = FirstFocus::Date, QWidget* parent = nullptr);

protected:
    void OnInitDialog() override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void makePickers();
    void makeList();
    void buildLayout();
    /// False if the time of day is none of its day; the time then stays.
    [[nodiscard]] bool takePickers();
    void showPickers();
    void buildList();
    void fitColumns();
    void enableRemove();
    void OnSetStart();
    void OnSetStop();
    void OnRemove();
    void addOrder();

    ScheduleTable& m_table;
    SelectedService m_selected;
    qint64 m_timeValue; ///< its time of day and daylight-saving flag are the order's
    QDate m_dateValue;
    bool IsStart = false; ///< a start is being added
    FirstFocus m_focus;

    QDateEdit* m_date;
    QTimeEdit* m_time;
    QPushButton* m_setStart;
    QPushButton* m_setStop;
    QPushButton* m_remove;
    QTreeView* m_list;
    ScheduleModel* m_model;
};

} // namespace quoril
