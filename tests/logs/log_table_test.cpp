#include "logs/log_table.h"

#include "services/service_info.h"
#include "support/event_log_samples.h"
#include "support/fake_machine.h"
#include "support/time_zone.h"
#include "support/utf16.h"

namespace quoril::test {
namespace {

constexpr qint64 Now = 1'700'000'000;

class LogTable : public testing::Test
{
protected:
    LogTable()
    {
        useTimeZone("UTC");
        fake.fakeClock.setNow(Now);
    }
    void putLog(const QString& text)
    {
        fake.fakeFiles.put(u"C:\\log", units(text));
        service.LogFile = u"C:\\log"_s;
    }
    void report(const QString& log, quint32 id, const QString& text)
    {
        fake.fakeEventLogs.logs[log].push_back(eventOf(quint32(Now), u"QUORIL"_s, {text}));
        fake.fakeEventLogs.logs[log].back().eventId = id;
    }
    QStringList rows()
    {
        table = buildLogTable(service);
        QStringList rows;
        for (qsizetype row = 0; row < table.rowCount(); ++row)
            rows.append(u"%1 %2|%3|%4"_s.arg(table.colour(row), 6, 16, QChar(u'0'))
                            .arg(table.text(row, 0), table.text(row, 1), table.text(row, 2)));
        return rows;
    }

    FakeMachine fake;
    ServiceInfo service;
    PanelTable table;
};

TEST_F(LogTable, ShowsTheSourcesInOrderAndColour)
{
    report(u"System"_s, 100, u"red"_s);
    report(u"Application"_s, 0xABC, u"20261122:221559:WARN :  1F"_s + QString(26, u' ') + u"warned"_s);
    const auto message = [](const QString& tag, const QString& code, const QString& text) {
        return u"20010203:040506"_s + tag + u"  "_s + code + QString(20, u' ') + text + u"\r\n"_s;
    };
    putLog(message(u":INFO :"_s, u"00000248"_s, u"before"_s)
        + message(u":INFO :"_s, u"00000249"_s, u"started"_s)
        + message(u":ERROR:"_s, u"0000ABCD"_s, u"failed"_s) + u"badly\r\n"_s);
    service.LogFrom = quint32(Now - 10);
    const QString now = u"2023-11-14 22:13:20"_s;
    EXPECT_EQ(rows(),
        QStringList({u"ff8080 "_s + now + u"|02000039|SERVICE-MANAGER: Begin of the Windows System Log..."_s,
            u"2020ff "_s + now + u"|00000064|red"_s,
            u"ff8080 "_s + now + u"|0200003A|SERVICE-MANAGER: End of the Windows System Log"_s,
            u"ff8080 "_s + now + u"|02000037|SERVICE-MANAGER: Begin of the Windows Application Log..."_s,
            u"ffffe6 "_s + now + u"|0000001F|warned"_s,
            u"ff8080 "_s + now + u"|02000038|SERVICE-MANAGER: End of the Windows Application Log"_s,
            u"e6ffff 2001-02-03 04:05:06|00000249|started"_s, u"2020ff 2001-02-03 04:05:06|0000ABCD|failed"_s,
            u"2020ff 2001-02-03 04:05:06|0000ABCD|badly"_s}));
    EXPECT_EQ(service.LogTo, quint32(Now + 3));
    EXPECT_EQ(*clipboardText(table, {{6, 6}, {8, 8}}),
        u"2001-02-03 04:05:06    00000249    started\r\n2001-02-03 04:05:06    0000ABCD    badly\r\n"_s);
    EXPECT_EQ(table.column(0).heading + u'|' + table.column(1).heading + u'|' + table.column(2).heading,
        u"Date:|Message ID:|Message text:"_s);
    struct TooMuch : PanelRows
    {
        qsizetype count() const override { return 1; }
        QString text(qsizetype, int) const override { throw std::bad_alloc(); }
        PanelColour colour(qsizetype) const override { return 0; }
    };
    PanelTable large(std::vector<PanelColumn>(1));
    large.addRows(std::make_shared<TooMuch>());
    EXPECT_EQ(clipboardText(large, {{0, 0}}).errorNumber(), error::NotEnoughMemory);

    // A period that is not set shows no events; the table of before keeps its rows.
    service.LogFrom = service.LogTo = 0;
    const PanelTable before = table;
    EXPECT_EQ(rows().size(), 3);
    EXPECT_EQ(before.text(1, 2), u"red"_s);
    EXPECT_EQ(service.LogTo, 0u);
}

TEST_F(LogTable, DatesEventsInLocalTimeAndColoursThemByType)
{
    useTimeZone("XST-5:30"); // five and a half hours ahead
    const auto tagged = [](const char* tag, const char* code) {
        return u"20261122:221559:%1  %2%3"_s.arg(QLatin1StringView(tag), QLatin1StringView(code))
                   .leftJustified(52)
            + u"text"_s;
    };
    report(u"Application"_s, 7, tagged("INFO :", "12345"));
    report(u"Application"_s, 7, tagged("WARN :", "A"));
    report(u"Application"_s, 7, tagged("ERROR:", "DEADBEEF"));
    report(u"Application"_s, 100, u"text"_s);
    report(u"Application"_s, 0xC0000064, u"text"_s);
    service.LogFrom = service.LogTo = quint32(Now);
    EXPECT_EQ(rows().sliced(1, 5),
        QStringList({u"e6ffff 2023-11-15 03:43:20|00012345|text"_s,
            u"ffffe6 2023-11-15 03:43:20|0000000A|text"_s, u"2020ff 2023-11-15 03:43:20|DEADBEEF|text"_s,
            u"2020ff 2023-11-15 03:43:20|00000064|text"_s, u"e6ffff 2023-11-15 03:43:20|C0000064|text"_s}));
}

TEST_F(LogTable, BeginsAnOpenPeriodAtTheMachinesStart)
{
    fake.fakeClock.advance(100'000);
    const quint64 up = fake.fakeClock.tickCount() / 1000;
    service.LogTo = quint32(Now + 200);
    rows();
    EXPECT_EQ(service.LogFrom, quint32(Now + 100 - qint64(up)));
    EXPECT_EQ(service.LogTo, quint32(Now + 200));
}

TEST_F(LogTable, ReportsALogThatIsMissing)
{
    ASSERT_EQ(rows().size(), 1);
    EXPECT_EQ(table.text(0, 1), u"0200003C"_s);
    EXPECT_EQ(table.colour(0), 0xFF8080u);
    service.LogFile = u"C:\\none"_s;
    ASSERT_EQ(rows().size(), 1);
    EXPECT_EQ(table.text(0, 1), u"0200003B"_s);
    EXPECT_EQ(table.colour(0), 0x2020FFu);
}

TEST_F(LogTable, WordsCodedMessages)
{
    EXPECT_EQ(codedMessageText(u"0200003E"_s, u"text"_s, 3), u"ERROR: 0200003E, text"_s);
    EXPECT_EQ(codedMessageText(u"0200003E"_s, u"text"_s, 0), u" 0200003E, text"_s);
}

} // namespace
} // namespace quoril::test
