#include "logs/app_event_log.h"

#include "formats/event_record.h"
#include "logs/hex_code.h"
#include "platform/event_logs.h"
#include "platform/machine.h"

#include <algorithm>
#include <limits>
#include <new>

namespace quoril {

namespace {

constexpr QStringView ApplicationLog = u"Application";
constexpr QStringView SystemLog = u"System";
constexpr QStringView EmulatorSource = u"QUORIL";
constexpr qint64 SecondsBeyond = 15;

constexpr qsizetype TagColumn = 16;
constexpr qsizetype CodeOffset = 24;
constexpr qsizetype TextOffset = 52;

struct Tag
{
    QStringView text;
    quint16 type;
};

constexpr Tag LevelTags[] = {
    {u"INFO :", event_type::Information},
    {u"WARN :", event_type::Warning},
    {u"ERROR:", event_type::Error},
};

/// The insert strings as one text: a blank after the first, nothing between the others. Empty if all are.
QString joined(const InsertStrings& inserts)
{
    QString text;
    if (inserts.byteSize() == 2 * inserts.count())
        return text;
    for (qsizetype index = 0; index < inserts.count(); ++index) {
        text += inserts.at(index);
        if (index == 0 && inserts.count() > 1)
            text += u' ';
    }
    return text;
}

quint32 codeOf(QStringView line)
{
    quint32 code = 0;
    for (const QChar unit : line.sliced(CodeOffset)) {
        const int digit = hexDigit(unit.unicode());
        if (digit < 0)
            break;
        code = code << 4 | quint32(digit);
    }
    return code;
}

const Tag* tagOf(QStringView line)
{
    const auto found = std::find_if(std::begin(LevelTags), std::end(LevelTags),
        [line](const Tag& tag) { return line.sliced(TagColumn).startsWith(tag.text); });
    return found == std::end(LevelTags) ? nullptr : found;
}

qint64 beyond(qint64 to)
{
    return std::min(to, std::numeric_limits<qint64>::max() - SecondsBeyond) + SecondsBeyond;
}

} // namespace

EventRecord EventRecords::operator[](qsizetype index) const
{
    return {typeOf(index), eventIdOf(index), timeOf(index), textOf(index).toString()};
}

QStringView EventRecords::textOf(qsizetype index) const
{
    const qsizetype begin = index == 0 ? 0 : line(index - 1).end;
    return QStringView(m_content->texts).mid(begin, line(index).end - begin);
}

void EventRecords::append(quint16 type, quint32 eventId, qint64 time, QStringView text)
{
    if (!m_content)
        m_content = std::make_shared<Content>();
    else if (m_content.use_count() > 1)
        m_content = std::make_shared<Content>(*m_content);
    m_content->texts.append(text.utf16(), std::size_t(text.size()));
    m_content->lines.push_back({time, qsizetype(m_content->texts.size()), eventId, type});
}

void splitEventLines(const EventEntry& entry, const EventLineVisitor& visit)
{
    if (entry.insertBytes == 0)
        return;
    const QString text = joined(entry.insertStrings);
    quint32 code = 0;
    quint16 type = EventRecord::NoTag;
    bool tried = false;
    for (QStringView line : QStringView(text).split(u'\n')) {
        if (line.endsWith(u'\r'))
            line.chop(1);
        if (line.isEmpty())
            continue;
        quint32 eventId = code != 0 ? code : entry.eventId;
        QStringView shown = line;
        if (!tried && line.size() > TextOffset) {
            tried = true;
            if (const Tag* const tag = tagOf(line)) {
                type = tag->type;
                eventId = code = codeOf(line);
                shown = line.sliced(TextOffset);
            }
        }
        visit(type, eventId, entry.timeGenerated, shown);
    }
}

bool walkEventLines(QStringView name, qint64 from, qint64 to, const EventLineVisitor& visit)
{
    const bool application = name == ApplicationLog;
    const EventSpan span{from, beyond(to)};
    const auto log = machine().eventLogs().open(application ? ApplicationLog : SystemLog, span);
    if (!log)
        return false;
    EventEntry entry;
    while ((*log)->next(entry)) {
        if (!application || entry.sourceName.contains(EmulatorSource))
            splitEventLines(entry, visit);
    }
    return true;
}

bool AppEventLog::ReadLog(QStringView name, qint64 from, qint64 to)
{
    EventRecords& records = name == ApplicationLog ? m_application : m_system;
    records.clear();
    try {
        return walkEventLines(
            name, from, to, [&records](quint16 type, quint32 eventId, qint64 time, QStringView text) {
                records.append(type, eventId, time, text);
            });
    } catch (const std::bad_alloc&) {
        records.clear();
        return false;
    }
}

} // namespace quoril
