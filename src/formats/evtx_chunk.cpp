#include "formats/evtx_chunk.h"

#include "formats/event_log_record.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <utility>

namespace quoril::evtx {
namespace {

constexpr quint32 RecordMagic = 0x00002A2A;
constexpr quint32 RecordHeaderSize = 24;
constexpr quint32 RecordTrailerSize = 4;
constexpr quint32 RecordStep = 8;
constexpr int MaximumNesting = 8;
/// Steps and bytes of values that a record may take, and more for each byte it has: far above any real
/// record, and the bound for templates that name each other.
constexpr qint64 RecordBudget = 16'384;
constexpr qint64 BudgetPerByte = 16;
constexpr std::size_t MaximumPrograms = 1024;
constexpr quint32 MostUnfolding = 8;

template <typename T> T load(QByteArrayView bytes, quint32 offset)
{
    return qFromLittleEndian<T>(bytes.data() + offset);
}

Value textValue(const QString& text)
{
    // The text of a literal in the byte order of the file.
    static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN);
    return {value_type::String, QByteArrayView(reinterpret_cast<const char*>(text.utf16()), text.size() * 2)};
}

bool isName(Place place)
{
    return place == Place::ProviderName || place == Place::EventSourceName || place == Place::Computer;
}

quint16 eventType(quint64 level, quint64 keywords)
{
    constexpr quint64 AuditFailure = 0x0010'0000'0000'0000;
    constexpr quint64 AuditSuccess = 0x0020'0000'0000'0000;
    if ((keywords & AuditFailure) != 0)
        return event_type::AuditFailure;
    if ((keywords & AuditSuccess) != 0)
        return event_type::AuditSuccess;
    if (level == 1 || level == 2)
        return event_type::Error;
    return level == 3 ? event_type::Warning : event_type::Information;
}

} // namespace

namespace {

/// The size of the record at an offset; 0 for what is none. A record that is whole repeats its size at its
/// end.
quint32 recordSize(QByteArrayView bytes, quint32 offset, quint32 end)
{
    if (end - offset < RecordHeaderSize + RecordTrailerSize || load<quint32>(bytes, offset) != RecordMagic)
        return 0;
    const quint32 size = load<quint32>(bytes, offset + 4);
    const bool isWhole = size >= RecordHeaderSize + RecordTrailerSize && size <= end - offset
        && load<quint32>(bytes, offset + size - RecordTrailerSize) == size;
    return isWhole ? size : 0;
}

} // namespace

bool Chunk::hasMagic(QByteArrayView bytes)
{
    return bytes.size() >= 8 && std::memcmp(bytes.data(), "ElfChnk", 8) == 0;
}

quint64 Chunk::firstRecord(QByteArrayView bytes)
{
    return load<quint64>(bytes, 24);
}

void Chunk::begin()
{
    constexpr quint32 FreeSpaceOffset = 48;
    m_programs.clear();
    m_chunk = m_bytes;
    m_offset = HeaderSize;
    m_gapBegin = 0;
    m_gaps = m_records = 0;
    m_damage = {};
    m_end = std::min(quint32(m_chunk.size()), Size);
    if (m_end < HeaderSize) {
        m_end = m_offset;
        return;
    }
    // After the free space's start lie remains of older records.
    const quint32 freeSpace = load<quint32>(m_chunk, FreeSpaceOffset);
    if (freeSpace >= HeaderSize)
        m_end = std::min(m_end, freeSpace);
}

bool Chunk::next(const EventSpan& span, EventEntry& entry)
{
    m_span = span;
    while (!m_isOverLimit && m_offset < m_end && m_end - m_offset >= RecordHeaderSize + RecordTrailerSize) {
        const quint32 start = m_offset;
        const quint32 size = recordSize(m_chunk, start, m_end);
        if (size == 0) {
            m_gaps += m_gapBegin == 0;
            m_gapBegin = m_gapBegin == 0 ? start : m_gapBegin;
            m_offset += RecordStep;
            continue;
        }
        if (m_gapBegin != 0)
            m_damage.add(std::exchange(m_gapBegin, 0), 0); // how many, shows at the end
        m_offset += size;
        ++m_records;
        const Decoded decoded = decode(start, start + size - RecordTrailerSize, entry);
        if (decoded == Decoded::Event)
            return true;
        if (decoded == Decoded::Damaged)
            m_damage.add(start, 1);
    }
    if (!m_isOverLimit)
        countMissing();
    return false;
}

/// Counts what is missing at the chunk's end: by the record numbers of its header where they can be, else one
/// for each piece of damaged ground.
void Chunk::countMissing()
{
    const quint32 place = m_gapBegin != 0 ? m_gapBegin : m_offset;
    quint64 missing = std::exchange(m_gaps, 0);
    if (m_end > HeaderSize) {
        constexpr quint32 LastRecordOffset = 32;
        const quint64 last = load<quint64>(m_chunk, LastRecordOffset);
        const quint64 first = firstRecord(m_chunk);
        const quint64 most = (Size - HeaderSize) / (RecordHeaderSize + RecordTrailerSize);
        if (first > 0 && first <= last && last - first < most && last - first + 1 > m_records)
            missing = last - first + 1 - m_records;
    }
    if (missing > 0)
        m_damage.add(place, missing);
    m_records += missing; // a second call finds none
    m_gapBegin = 0;
}

quint64 Chunk::strayRecords(QByteArrayView bytes)
{
    quint64 count = 0;
    const auto end = quint32(bytes.size());
    for (quint32 offset = HeaderSize; offset + RecordHeaderSize + RecordTrailerSize <= end;) {
        const quint32 size = recordSize(bytes, offset, end);
        count += size > 0;
        offset += size > 0 ? size : RecordStep;
    }
    return count;
}

Chunk::Decoded Chunk::decode(quint32 offset, quint32 end, EventEntry& entry)
{
    m_pending = {};
    m_pending.budget = RecordBudget + BudgetPerByte * (end - offset);
    m_pending.isMeasured = end - offset > m_recordLimit / MostUnfolding;
    m_values.clear();
    entry.recordNumber = quint32(load<quint64>(m_chunk, offset + 8));
    const auto written = secondsSinceEpoch(load<quint64>(m_chunk, offset + 16));
    entry.timeWritten = heldSeconds(written);
    entry.timeGenerated = entry.timeWritten;
    m_pending.isBeforeEpoch = written < 0;
    entry.eventCategory = 0;
    entry.insertStrings.clear();
    entry.userSid.resize(0);
    entry.data.resize(0);
    runFragment(offset + RecordHeaderSize, end, Place::Document, entry);
    checkSpan(entry);
    if (m_pending.outside)
        return Decoded::OutsideSpan;
    if (!m_pending.hasId)
        return Decoded::Damaged;
    finish(entry);
    m_isOverLimit = m_recordLimit != NoRecordLimit && eventLogRecordSize(entry) > m_recordLimit;
    if (m_isOverLimit)
        return Decoded::OverLimit;
    return isInSpan(entry) ? Decoded::Event : Decoded::OutsideSpan;
}

bool Chunk::isInSpan(const EventEntry& entry) const
{
    return !m_pending.isBeforeEpoch && m_span.contains(entry.timeGenerated);
}

void Chunk::checkSpan(const EventEntry& entry)
{
    if (m_pending.hasTime || m_pending.depth == 0)
        m_pending.outside = !m_pending.isMeasured && !isInSpan(entry);
}

void Chunk::finish(EventEntry& entry) const
{
    entry.insertStrings.beginString();
    if (!m_pending.hasSource)
        entry.sourceName.clear();
    if (!m_pending.hasComputer)
        entry.computerName.clear();
    entry.eventId = m_pending.qualifiers << 16 | (m_pending.eventId & 0xFFFF);
    entry.eventType = eventType(m_pending.level, m_pending.keywords);
    entry.insertBytes = entry.insertStrings.byteSize();
}

void Chunk::runFragment(quint32 offset, quint32 end, Place place, EventEntry& entry)
{
    constexpr quint32 FragmentHeaderSize = 4;
    if (m_pending.depth >= MaximumNesting || end < offset || end - offset < FragmentHeaderSize)
        return;
    ++m_pending.depth;
    // The common record: a fragment header and one template instance.
    const quint32 body = load<quint8>(m_chunk, offset) == 0x0F ? offset + FragmentHeaderSize : offset;
    if (body < end && load<quint8>(m_chunk, body) == 0x0C) {
        runInstance(body, end, place, entry);
    } else {
        m_pending.budget -= end - offset;
        const Program program = compile(m_chunk, offset, end, place);
        run(program, m_values.size(), 0, end, entry);
    }
    --m_pending.depth;
}

void Chunk::runInstance(quint32 offset, quint32 limit, Place place, EventEntry& entry)
{
    const auto instance = readInstance(m_chunk, offset, limit);
    if (!instance || m_pending.depth >= MaximumNesting || m_pending.budget <= 0)
        return;
    ++m_pending.depth;
    const std::size_t firstValue = m_values.size();
    const quint32 count = load<quint32>(m_chunk, instance->values);
    quint32 descriptor = instance->values + 4;
    quint32 at = descriptor + count * 4;
    for (quint32 i = 0; i < count; ++i, descriptor += 4) {
        const quint32 size = load<quint16>(m_chunk, descriptor);
        if (size > instance->end - at)
            break;
        m_values.push_back({load<quint8>(m_chunk, descriptor + 2), m_chunk.sliced(at, size)});
        at += size;
    }
    m_pending.budget -= count;
    run(programOf(instance->definition, place), firstValue, m_values.size() - firstValue,
        quint32(m_chunk.size()), entry);
    m_values.resize(firstValue);
    --m_pending.depth;
}

const Program& Chunk::programOf(quint32 definition, Place place)
{
    static const Program noProgram;
    const quint64 key = quint64(definition) << 8 | quint64(place);
    const auto found = m_programs.find(key);
    if (found != m_programs.end())
        return found->second;
    if (m_programs.size() >= MaximumPrograms)
        return noProgram;
    return m_programs.emplace(key, compileTemplate(m_chunk, definition, place)).first->second;
}

void Chunk::run(
    const Program& program, std::size_t firstValue, std::size_t valueCount, quint32 limit, EventEntry& entry)
{
    for (const Step& step : program) {
        if (--m_pending.budget <= 0 || m_pending.outside)
            return;
        switch (step.kind) {
        case Step::Kind::Literal:
            if (isName(step.place))
                setName(step.literal, step.place, entry);
            else
                substitute(textValue(step.literal), step.place, entry);
            break;
        case Step::Kind::Substitution:
            if (step.index < valueCount) {
                const Value value = m_values[firstValue + step.index];
                m_pending.noString = step.optional && value.type == value_type::Null;
                substitute(value, step.place, entry);
            }
            break;
        case Step::Kind::Instance:
            runInstance(step.index, limit, step.place, entry);
            break;
        case Step::Kind::Body:
            checkSpan(entry);
            break;
        case Step::Kind::BeginString:
            entry.insertStrings.beginString();
            break;
        case Step::Kind::EndString:
            endString(entry);
            break;
        }
    }
}

void Chunk::substitute(const Value& value, Place place, EventEntry& entry)
{
    m_pending.budget -= value.bytes.size();
    if (value.type == value_type::BinXml) {
        const quint32 offset = quint32(value.bytes.data() - m_chunk.data());
        runFragment(offset, offset + quint32(value.bytes.size()), place, entry);
    } else if (place == Place::Data || place == Place::UserItem) {
        appendStrings(value, entry);
    } else {
        setField(value, place, entry);
    }
}

void Chunk::appendStrings(Value value, EventEntry& entry)
{
    if (!value.isArray())
        return appendText(value, entry.insertStrings.units());
    // An element whose content is an array stands for one element per item.
    Value item;
    if (!takeItem(value, item)) {
        m_pending.noString = true;
        return;
    }
    appendText(item, entry.insertStrings.units());
    while (takeItem(value, item)) {
        entry.insertStrings.endString();
        appendText(item, entry.insertStrings.units());
    }
}

void Chunk::endString(EventEntry& entry)
{
    if (!m_pending.noString)
        entry.insertStrings.endString();
    m_pending.noString = false;
}

void Chunk::setField(const Value& value, Place place, EventEntry& entry)
{
    switch (place) {
    case Place::ProviderName:
    case Place::EventSourceName:
    case Place::Computer:
        m_scratch.resize(0);
        appendText(value, m_scratch);
        return setName(m_scratch, place, entry);
    case Place::EventId:
        m_pending.eventId = quint32(toNumber(value));
        m_pending.hasId = true;
        return;
    case Place::Qualifiers:
        m_pending.qualifiers = quint32(toNumber(value));
        return;
    case Place::Level:
        m_pending.level = toNumber(value);
        return;
    case Place::Task:
        entry.eventCategory = quint16(toNumber(value));
        return;
    case Place::Keywords:
        m_pending.keywords = toNumber(value);
        return;
    case Place::SystemTime: {
        const qint64 seconds = secondsSinceEpoch(value);
        entry.timeGenerated = heldSeconds(seconds);
        m_pending.isBeforeEpoch = seconds < 0;
        m_pending.hasTime = true;
        return;
    }
    case Place::EventRecordId:
        entry.recordNumber = quint32(toNumber(value));
        return;
    case Place::UserId:
        if (value.type == value_type::Sid)
            entry.userSid.append(value.bytes);
        return;
    case Place::Binary:
        return setBinary(value, entry);
    default:
        return;
    }
}

void Chunk::setName(const QString& name, Place place, EventEntry& entry)
{
    if (const qsizetype zero = name.indexOf(QChar(u'\0')); zero >= 0)
        return setName(QString(name.constData(), zero), place, entry);
    const bool isComputer = place == Place::Computer;
    const bool isClassic = place == Place::EventSourceName;
    if (name.isEmpty() || (place == Place::ProviderName && m_pending.hasClassicSource))
        return;
    QString& field = isComputer ? entry.computerName : entry.sourceName;
    // Names repeat from event to event; a literal shares its buffer, the scratch buffer is copied.
    if (field != name)
        field = &name == &m_scratch ? QString(name.constData(), name.size()) : name;
    (isComputer ? m_pending.hasComputer : m_pending.hasSource) = true;
    m_pending.hasClassicSource = m_pending.hasClassicSource || isClassic;
}

void Chunk::setBinary(const Value& value, EventEntry& entry)
{
    if (value.type == value_type::Binary) {
        entry.data.append(value.bytes);
    } else if (value.type == value_type::String) {
        m_scratch.resize(0);
        appendText(value, m_scratch);
        entry.data.append(QByteArray::fromHex(m_scratch.toLatin1()));
    }
}

} // namespace quoril::evtx
