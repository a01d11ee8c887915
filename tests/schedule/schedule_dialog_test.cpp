#include "schedule/schedule_dialog.h"

#include "schedule/schedule_time.h"
#include "support/person.h"
#include "support/service_bench.h"

#include <QDateEdit>
#include <QTimeEdit>
#include <QTreeView>

namespace quoril::test {

namespace {

constexpr int Ok = 1, Cancel = 2, SetStart = 1021, SetStop = 1022, Remove = 1050;

struct Window
{
    explicit Window(QWidget& dialog) : self(dialog) { }
    QWidget& self;
    QTreeView& list = *self.findChild<QTreeView*>(u"1048"_s);
    QDateEdit& date = *self.findChild<QDateEdit*>(u"1040"_s);
    QTimeEdit& time = *self.findChild<QTimeEdit*>(u"1041"_s);

    bool canRemove() const { return self.findChild<QWidget*>(u"1050"_s)->isEnabled(); }
    /// One column's cells.
    QStringList cells(int column) const
    {
        QStringList cells;
        for (int row = 0; row < list.model()->rowCount(); ++row)
            cells.append(list.model()->index(row, column).data().toString());
        return cells;
    }
};

struct Console : ServiceBench
{
    ScheduleTable table;
    ServiceInfo* selected = &record;
    Person person;
    const qint64 now = fakeClock.now();

    int run(const std::function<void(Window)>& action)
    {
        person.on(u"Schedule dialog"_s, [&](QWidget& window) { action(Window(window)); });
        const int result = ScheduleDialog(
            table, [this] { return selected; }, now)
                               .exec();
        EXPECT_EQ(person.left(), 0U);
        return result;
    }
    void fill()
    {
        for (const QChar name : u"ABCDE"_s) {
            record.Name = name;
            table.add({record, name == u'A' ? 0 : now + 60, name == u'E' ? 7 : 1});
        }
    }
};

} // namespace

TEST(ScheduleDialog, AddsAtOnceAMinuteApartAndKeepsWhatWasAddedAfterCancel)
{
    Console console;
    EXPECT_EQ(console.run([&](Window window) {
        const int part = window.list.viewport()->width() / 5;
        EXPECT_EQ(window.list.columnWidth(0), 2 * part);
        EXPECT_EQ(window.list.columnWidth(2), part);
        EXPECT_FALSE(window.canRemove());
        EXPECT_EQ(window.date.date(), localDate(console.now));
        EXPECT_EQ(window.self.focusWidget(), &window.date);
        console.person.on(u"Please wait for service scheduling..."_s,
            [&](QWidget&) { EXPECT_EQ(console.table.orders().size(), 1U); });
        Person::press(window.self, SetStart);
        Person::press(window.self, SetStop);
        EXPECT_EQ(window.time.time(), localTimeOfDay(console.now + 120));
        window.date.setDate({2030, 5, 6});
        window.time.setTime({23, 59, 10});
        Person::press(window.self, SetStart);
        Person::press(window.self, SetStart);
        EXPECT_EQ(window.date.date(), QDate(2030, 5, 6));
        // No such moment, then no tree to ask: nothing is added and nothing moves.
        window.date.setDate({1950, 1, 1});
        Person::press(window.self, SetStart);
        window.date.setDate({2030, 5, 6});
        console.selected = nullptr;
        Person::press(window.self, SetStart);
        EXPECT_EQ(window.time.time(), QTime(0, 1, 10));
        Person::press(window.self, Cancel);
    }),
        QDialog::Rejected);
    EXPECT_EQ(console.fakeClock.timers, (std::vector<quint32>(4, 2000)));
    EXPECT_EQ(console.run([&](Window window) {
        EXPECT_EQ(window.cells(0), QStringList(4, u"Quoril1"_s));
        EXPECT_EQ(window.cells(1),
            (QStringList{scheduleTimeText(console.now), scheduleTimeText(console.now + 60),
                u"Mon May 06 23:59:10 2030"_s, u"Mon May 06 00:00:10 2030"_s}));
        EXPECT_EQ(window.cells(2).mid(0, 2), (QStringList{u"to be Started"_s, u"to be Stopped"_s}));
        Person::press(window.self, Ok);
    }),
        QDialog::Accepted);
}

TEST(ScheduleDialog, RemovesExactlyTheOrdersOfTheSelectedRows)
{
    Console console;
    console.fill();
    console.run([&](Window window) {
        EXPECT_EQ(window.cells(2).last(), u"Unknown");
        for (const int row : {1, 3, 4})
            window.list.selectionModel()->select(
                window.list.model()->index(row, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
        EXPECT_TRUE(window.canRemove());
        console.table.runPass(); // A is gone, and the rows stay where they were
        EXPECT_EQ(window.cells(0).size(), 5);
        Person::press(window.self, Remove);
        EXPECT_EQ(window.cells(0), QStringList{u"C"_s});
        EXPECT_FALSE(window.canRemove());

        console.fill();
        window.list.setFocus();
        Person::type(window.self, Qt::Key_Home);
        Person::press(window.self, Remove);
        // Three rows by the keyboard, the first of them carried out since.
        window.list.setFocus();
        Person::type(window.self, Qt::Key_Home);
        for (int i = 0; i < 2; ++i)
            Person::type(window.self, Qt::Key_Down, Qt::ShiftModifier);
        console.table.runPass();
        Person::press(window.self, Remove);
        EXPECT_EQ(window.cells(0), (QStringList{u"D"_s, u"E"_s}));
        Person::press(window.self, Ok);
    });
}

} // namespace quoril::test
