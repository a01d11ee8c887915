#include "ctl/moment.h"
#include "platform/terminal_text.h"
#include "support/time_zone.h"

namespace quoril::test {
namespace {

TEST(TerminalText, LetsNothingThroughThatCommandsOrTurnsTheTerminal)
{
    const QStringView harmless = u"Überwachung \"C:\\a\" 漢字 \U0001F5A5 e\u0301";
    EXPECT_EQ(terminalText(harmless), harmless);
    const std::pair<QStringView, QStringView> cases[] = {
        {u"a\x1b[2J\a", u"a\\u001b[2J\\u0007"},
        {u"\t\r\n\x7f", u"\\t\\r\\n\\u007f"},
        {u"\u009b31m\u0085", u"\\u009b31m\\u0085"}, // controls of eight bits
        {u"exe\u202Egpj\u2066\u200F\u061C", u"exe\\u202egpj\\u2066\\u200f\\u061c"},
        {u"\u2028\u2029\uFEFF\u00AD", u"\\u2028\\u2029\\ufeff\\u00ad"},
        {u"\U000E0041", u"\\udb40\\udc41"},
    };
    for (const auto& [text, shown] : cases)
        EXPECT_EQ(terminalText(text), shown);
    const char16_t halves[] = {0xDC00, u'x', 0xD800};
    EXPECT_EQ(terminalText(QStringView(halves, 3)), u"\\udc00x\\ud800");
}

TEST(Moment, IsReadFromATextOrRefused)
{
    useTimeZone("CET-1"); // a form that Windows knows too
    const qint64 now = *parseMoment(u"2026-11-30T17:00:00");
    EXPECT_EQ(now, 1796054400);
    const std::pair<QStringView, qint64> times[] = {
        {u"18:00", now + 3600},
        {u"17:00:00", now},
        {u"16:59", now + 24 * 3600 - 60},
        {u"+90", now + 90},
        {u"+90s", now + 90},
        {u"+15m", now + 900},
        {u"+2h", now + 7200},
        {u"2026-11-30 17:00:01", now + 1},
        {u"2026-11-30T17:00Z", now + 3600},
        {u"2026-11-30", now - 17 * 3600},
    };
    for (const auto& [text, moment] : times)
        EXPECT_EQ(parseOrderTime(text, now), moment) << text;
    for (const QStringView text : {u"", u"+", u"+h", u"+-3", u"25:00", u"18", u"2026-13-01", u"1969-12-31",
             u"2200-01-01", u"+4294967295h", u"tomorrow"})
        EXPECT_FALSE(parseOrderTime(text, now)) << text;

    QString fault;
    const auto order = parseOrder(u"stop@18:00=A=b@c", now, fault);
    ASSERT_TRUE(order);
    EXPECT_EQ(order->action, schedule_action::Stop);
    EXPECT_EQ(order->time, now + 3600);
    EXPECT_EQ(order->name, u"A=b@c");
    for (const QStringView text :
        {u"", u"start", u"start@18:00", u"pause@18:00=A", u"start@18:00=", u"start@=A"})
        EXPECT_FALSE(parseOrder(text, now, fault)) << text;
}

} // namespace
} // namespace quoril::test
