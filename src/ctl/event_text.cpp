#include "ctl/event_text.h"

#include <QDateTime>

#include <algorithm>
#include <array>
#include <chrono>
#include <iterator>

namespace quoril {

namespace {

struct EventType
{
    quint16 number;
    const char* word;
    LineStyle style;
};

constexpr EventType EventTypes[] = {
    {event_type::Success, "success", LineStyle::Plain},
    {event_type::Error, "error", LineStyle::Error},
    {event_type::Warning, "warning", LineStyle::Warning},
    {event_type::Information, "information", LineStyle::Plain},
    {event_type::AuditSuccess, "audit-success", LineStyle::Plain},
    {event_type::AuditFailure, "audit-failure", LineStyle::Error},
};
constexpr EventType UnknownType{0, "unknown", LineStyle::Plain};

const EventType& typeOf(const EventEntry& entry)
{
    const auto found = std::find_if(std::begin(EventTypes), std::end(EventTypes),
        [&entry](const EventType& type) { return type.number == entry.eventType; });
    return found == std::end(EventTypes) ? UnknownType : *found;
}

constexpr qint64 SecondsPerDay = 86'400;

char* putTwo(char* out, unsigned number)
{
    *out++ = char('0' + number / 10);
    *out++ = char('0' + number % 10);
    return out;
}

/// "2026-11-30", the separator, "17:00:00".
void appendMoment(QByteArray& text, qint64 seconds, char separator)
{
    using namespace std::chrono;
    const qint64 day = seconds >= 0 ? seconds / SecondsPerDay : (seconds + 1) / SecondsPerDay - 1;
    const year_month_day date{sys_days{days{day}}};
    const auto time = unsigned(seconds - day * SecondsPerDay);
    const auto year = unsigned(int(date.year()));
    std::array<char, 19> moment{};
    char* out = putTwo(putTwo(moment.data(), year / 100), year % 100);
    *out++ = '-';
    out = putTwo(out, unsigned(date.month()));
    *out++ = '-';
    out = putTwo(out, unsigned(date.day()));
    *out++ = separator;
    out = putTwo(out, time / 3600);
    *out++ = ':';
    out = putTwo(out, time / 60 % 60);
    *out++ = ':';
    putTwo(out, time % 60);
    text.append(moment.data(), qsizetype(moment.size()));
}

void appendNumber(QByteArray& text, quint32 number)
{
    std::array<char, 10> digits{};
    char* first = digits.data() + digits.size();
    do {
        *--first = char('0' + number % 10);
        number /= 10;
    } while (number > 0);
    text.append(first, digits.data() + digits.size() - first);
}

/// Puts one code point in UTF-8 that needs more than one byte.
char* putWide(char* out, char32_t point)
{
    const auto tail = [&out, point](int shift) { *out++ = char(0x80 | (point >> shift & 0x3F)); };
    if (point < 0x800) {
        *out++ = char(0xC0 | point >> 6);
    } else if (point < 0x10000) {
        *out++ = char(0xE0 | point >> 12);
        tail(6);
    } else {
        *out++ = char(0xF0 | point >> 18);
        tail(12);
        tail(6);
    }
    tail(0);
    return out;
}

char* putEscape(char* out, char16_t unit)
{
    *out++ = '\\';
    switch (unit) {
    case u'"':
    case u'\\':
        *out++ = char(unit);
        return out;
    case u'\b':
        *out++ = 'b';
        return out;
    case u'\f':
        *out++ = 'f';
        return out;
    case u'\n':
        *out++ = 'n';
        return out;
    case u'\r':
        *out++ = 'r';
        return out;
    case u'\t':
        *out++ = 't';
        return out;
    default:
        break;
    }
    *out++ = 'u';
    for (const int shift : {12, 8, 4, 0})
        *out++ = "0123456789abcdef"[unit >> shift & 0xF];
    return out;
}

enum class Form
{
    Line,
    Json
};

/// Appends text in UTF-8. A line end becomes a blank in a line and an escape in JSON; half a surrogate pair,
/// which UTF-8 has no bytes for, a question mark or an escape.
template <Form form> void append(QByteArray& text, QStringView units)
{
    constexpr qsizetype MostBytesPerUnit = 6;
    const qsizetype before = text.size();
    text.resize(before + units.size() * MostBytesPerUnit);
    char* const begin = text.data();
    char* out = begin + before;
    const char16_t* const end = units.utf16() + units.size();
    for (const char16_t* at = units.utf16(); at != end; ++at) {
        const char16_t unit = *at;
        const bool isPlain
            = unit >= 0x20 && unit < 0x80 && (form == Form::Line || (unit != u'"' && unit != u'\\'));
        if (isPlain) {
            *out++ = char(unit);
        } else if (unit < 0x80) {
            if (form == Form::Json) {
                out = putEscape(out, unit);
            } else if (unit == u'\n' || unit == u'\r') {
                *out++ = ' ';
                at += unit == u'\r' && at + 1 != end && at[1] == u'\n' ? 1 : 0;
            } else {
                *out++ = char(unit);
            }
        } else if (!QChar::isSurrogate(unit)) {
            out = putWide(out, unit);
        } else if (QChar::isHighSurrogate(unit) && at + 1 != end && QChar::isLowSurrogate(at[1])) {
            out = putWide(out, QChar::surrogateToUcs4(unit, at[1]));
            ++at;
        } else if (form == Form::Json) {
            out = putEscape(out, unit);
        } else {
            *out++ = '?';
        }
    }
    text.resize(out - begin);
}

} // namespace

qint64 EventText::localOffset(quint32 moment)
{
    const auto offsetOf = [](qint64 at) { return qint64(QDateTime::fromSecsSinceEpoch(at).offsetFromUtc()); };
    const qint64 day = moment / SecondsPerDay;
    if (day != m_day) {
        m_day = day;
        m_offset = offsetOf(day * SecondsPerDay);
        m_isEven = m_offset == offsetOf((day + 1) * SecondsPerDay - 1);
    }
    return m_isEven ? m_offset : offsetOf(moment);
}

const QByteArray& EventText::line(const EventEntry& entry)
{
    constexpr qsizetype TypeWidth = 11;
    m_text.resize(0);
    appendMoment(m_text, entry.timeGenerated + localOffset(entry.timeGenerated), ' ');
    const QByteArrayView type(typeOf(entry).word);
    m_text.append("  ").append(type).append(std::max(TypeWidth - type.size(), qsizetype(0)) + 2, ' ');
    append<Form::Line>(m_text, entry.sourceName);
    m_text.append("  ");
    appendNumber(m_text, entry.eventId & 0xFFFF);
    m_text.append(' ');
    for (qsizetype i = 0; i < entry.insertStrings.count(); ++i) {
        m_text.append(' ');
        append<Form::Line>(m_text, entry.insertStrings.at(i));
    }
    if (entry.insertStrings.isEmpty())
        m_text.append(' ');
    return m_text;
}

const QByteArray& EventText::json(const EventEntry& entry)
{
    const auto text = [this](const char* name, QStringView value) {
        m_text.append(name);
        append<Form::Json>(m_text, value);
        m_text.append('"');
    };
    const auto number = [this](const char* name, quint32 value) {
        m_text.append(name);
        appendNumber(m_text, value);
    };
    m_text.resize(0);
    text(R"({"computer":")", entry.computerName);
    number(R"(,"eventId":)", entry.eventId & 0xFFFF);
    number(R"(,"qualifiers":)", entry.eventId >> 16);
    number(R"(,"recordNumber":)", entry.recordNumber);
    text(R"(,"source":")", entry.sourceName);
    m_text.append(R"(,"strings":[)");
    for (qsizetype i = 0; i < entry.insertStrings.count(); ++i)
        text(i == 0 ? "\"" : ",\"", entry.insertStrings.at(i));
    m_text.append(R"(],"time":")");
    appendMoment(m_text, entry.timeGenerated, 'T');
    m_text.append(R"(Z","type":")").append(typeOf(entry).word).append(R"("})");
    return m_text;
}

LineStyle EventText::styleOf(const EventEntry& entry)
{
    return typeOf(entry).style;
}

QString EventText::utcText(quint32 moment)
{
    QByteArray text;
    appendMoment(text, moment, 'T');
    return QString::fromLatin1(text) + u'Z';
}

} // namespace quoril
