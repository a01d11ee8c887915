#include "logs/app_event_log.h"

#include "support/event_log_samples.h"
#include "support/fake_machine.h"

namespace quoril::test {
namespace {

EventEntry entry(const QStringList& inserts, const QString& source = u"QUORIL"_s, quint32 time = 1000)
{
    EventEntry made = eventOf(time, source, inserts);
    made.eventId = 0xC0000007;
    return made;
}

std::vector<EventRecord> recordsOf(const EventEntry& of)
{
    std::vector<EventRecord> records;
    splitEventLines(of, [&records](quint16 type, quint32 id, qint64 time, QStringView text) {
        records.push_back({type, id, time, text.toString()});
    });
    return records;
}

QString tagged(const QString& tag, const QString& code, const QString& text)
{
    return u"20261122:221559:"_s + tag + u"  "_s + code.leftJustified(28) + text;
}

TEST(AppEventLog, SplitsEventsIntoLines)
{
    constexpr quint16 None = EventRecord::NoTag;
    constexpr quint32 Id = 0xC0000007;
    const QString exactly52 = QString(52, u'x');
    const QString early = u"20261122:221559INFO :"_s + QString(40, u'y');
    const struct
    {
        QStringList inserts;
        std::vector<EventRecord> records;
    } cases[] = {
        {{}, {}},
        {{QString(), QString()}, {}},
        {{QString(), u"b"_s}, {{None, Id, 1000, u" b"_s}}},
        {{QString()}, {}},
        {{u"a"_s, u"b"_s, u"c"_s}, {{None, Id, 1000, u"a bc"_s}}},
        {{u"\n\n\r\na\r\r\n"_s}, {{None, Id, 1000, u"a\r"_s}}},
        {{u"before\n"_s + tagged(u"ERROR:"_s, u"1F4x"_s, u"text"_s) + u"\r\nafter"_s},
            {{None, Id, 1000, u"before"_s}, {1, 0x1F4, 1000, u"text"_s}, {1, 0x1F4, 1000, u"after"_s}}},
        {{tagged(u"INFO :"_s, u"12345"_s, u"five"_s)}, {{4, 0x12345, 1000, u"five"_s}}},
        {{tagged(u"ERROR:"_s, u"aBcDg9"_s, u"letters"_s)}, {{1, 0xABCD, 1000, u"letters"_s}}},
        {{tagged(u"WARN :"_s, u"0"_s, u"zero"_s) + u"\nnext"_s},
            {{2, 0, 1000, u"zero"_s}, {2, Id, 1000, u"next"_s}}},
        {{exactly52 + u'\n' + tagged(u"INFO :"_s, u"12"_s, u"t"_s)},
            {{None, Id, 1000, exactly52}, {4, 0x12, 1000, u"t"_s}}},
        {{early + u'\n' + tagged(u"INFO :"_s, u"12"_s, u"t"_s)},
            {{None, Id, 1000, early}, {None, Id, 1000, tagged(u"INFO :"_s, u"12"_s, u"t"_s)}}},
    };
    for (const auto& each : cases)
        EXPECT_EQ(recordsOf(entry(each.inserts)), each.records) << each.inserts.join(u'|');
}

TEST(AppEventLog, ReadsEachLogByItsFilter)
{
    FakeMachine fake;
    fake.fakeEventLogs.logs[u"Application"_s] = {entry({u"early"_s}, u"QUORIL"_s, 999),
        entry({u"a"_s}, u"My QUORIL 2"_s), entry({u"b"_s}, u"quoril"_s), entry({u"c"_s}, u"QUORIL"_s, 1115),
        entry({u"late"_s}, u"QUORIL"_s, 1116)};
    fake.fakeEventLogs.logs[u"System"_s] = {entry({u"s"_s}, u"Other"_s)};
    AppEventLog log;
    EXPECT_TRUE(log.ReadLog(u"Application", 1000, 1100));
    EXPECT_TRUE(log.ReadLog(u"anything else", 1000, 1100));
    ASSERT_EQ(log.GetApplicationCount(), 2);
    EXPECT_EQ(log.m_application[0].m_text, u"a"_s);
    EXPECT_EQ(log.m_application[1].m_text, u"c"_s);
    ASSERT_EQ(log.GetSystemCount(), 1);
    EXPECT_EQ(log.m_system[0].m_text, u"s"_s);

    fake.fakeEventLogs.logs.erase(u"Application"_s);
    EXPECT_FALSE(log.ReadLog(u"Application", 1000, 1100));
    EXPECT_EQ(log.GetApplicationCount(), 0);
    EXPECT_EQ(log.GetSystemCount(), 1);
    EXPECT_EQ(fake.calls.open(), 0);
}

} // namespace
} // namespace quoril::test
