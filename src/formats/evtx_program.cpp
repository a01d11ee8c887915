#include "formats/evtx_program.h"

#include <QtEndian>

#include <algorithm>
#include <array>

namespace quoril::evtx {
namespace {

using namespace Qt::StringLiterals;

namespace token {
constexpr quint8 OpenElement = 0x01;
constexpr quint8 CloseStart = 0x02;
constexpr quint8 CloseEmpty = 0x03;
constexpr quint8 EndElement = 0x04;
constexpr quint8 Text = 0x05;
constexpr quint8 Attribute = 0x06;
constexpr quint8 CData = 0x07;
constexpr quint8 CharReference = 0x08;
constexpr quint8 EntityReference = 0x09;
constexpr quint8 InstructionTarget = 0x0A;
constexpr quint8 InstructionData = 0x0B;
constexpr quint8 TemplateInstance = 0x0C;
constexpr quint8 Substitution = 0x0D;
constexpr quint8 OptionalSubstitution = 0x0E;
constexpr quint8 FragmentHeader = 0x0F;
constexpr quint8 MoreFlag = 0x40;
} // namespace token

constexpr std::size_t MaximumDepth = 64;
constexpr quint32 DefinitionHeaderSize = 24;

struct Way
{
    Place from;
    QStringView name;
    Place to;
};

constexpr std::array Elements = {
    Way{Place::Document, u"Event", Place::Event},
    Way{Place::Event, u"System", Place::System},
    Way{Place::Event, u"EventData", Place::EventData},
    Way{Place::Event, u"UserData", Place::UserData},
    Way{Place::System, u"Provider", Place::Provider},
    Way{Place::System, u"EventID", Place::EventId},
    Way{Place::System, u"Level", Place::Level},
    Way{Place::System, u"Task", Place::Task},
    Way{Place::System, u"Keywords", Place::Keywords},
    Way{Place::System, u"TimeCreated", Place::TimeCreated},
    Way{Place::System, u"EventRecordID", Place::EventRecordId},
    Way{Place::System, u"Computer", Place::Computer},
    Way{Place::System, u"Security", Place::Security},
    Way{Place::EventData, u"Data", Place::Data},
    Way{Place::EventData, u"Binary", Place::Binary},
};

constexpr std::array Attributes = {
    Way{Place::Provider, u"Name", Place::ProviderName},
    Way{Place::Provider, u"EventSourceName", Place::EventSourceName},
    Way{Place::EventId, u"Qualifiers", Place::Qualifiers},
    Way{Place::TimeCreated, u"SystemTime", Place::SystemTime},
    Way{Place::Security, u"UserID", Place::UserId},
};

template <std::size_t N> Place follow(const std::array<Way, N>& ways, Place from, QStringView name)
{
    const auto way = std::find_if(ways.begin(), ways.end(),
        [&](const Way& candidate) { return candidate.from == from && candidate.name == name; });
    return way == ways.end() ? Place::Other : way->to;
}

Place elementPlace(Place parent, QStringView name)
{
    if (parent == Place::UserData)
        return Place::UserRoot;
    if (parent == Place::UserRoot || parent == Place::UserItem)
        return Place::UserItem;
    return follow(Elements, parent, name);
}

bool isString(Place place)
{
    return place == Place::Data || place == Place::UserItem;
}

/// Reads little-endian parts of a chunk up to a limit; remembers that it ran out.
class Cursor
{
public:
    Cursor(QByteArrayView chunk, quint32 offset, quint32 limit)
        : m_chunk(chunk)
        , m_offset(offset)
        , m_limit(std::min(limit, quint32(chunk.size())))
    {
    }

    bool atEnd() const { return m_bad || m_offset >= m_limit; }
    bool isBad() const { return m_bad; }
    quint32 offset() const { return m_offset; }
    quint32 limit() const { return m_limit; }

    template <typename T> T take()
    {
        const quint32 at = m_offset;
        return skip(sizeof(T)) ? qFromLittleEndian<T>(m_chunk.data() + at) : T{};
    }

    bool skip(quint32 size)
    {
        if (m_bad || m_offset > m_limit || size > m_limit - m_offset) {
            m_bad = true;
            return false;
        }
        m_offset += size;
        return true;
    }

    /// A text that its number of units precedes.
    QString takeText()
    {
        const quint32 units = take<quint16>();
        const quint32 at = m_offset;
        if (!skip(units * 2))
            return {};
        QString text(qsizetype(units), Qt::Uninitialized);
        qFromLittleEndian<char16_t>(m_chunk.data() + at, qsizetype(units), text.data());
        return text;
    }

    /// A name: given by offset in the chunk, and standing here if that is where the offset leads.
    QString takeName()
    {
        constexpr quint32 LinkAndHash = 6;
        const quint32 at = take<quint32>();
        if (m_bad)
            return {};
        Cursor name(m_chunk, at, quint32(m_chunk.size()));
        name.skip(LinkAndHash);
        QString text = name.takeText();
        name.skip(2);
        if (at == m_offset)
            skip(name.m_offset - at);
        m_bad = m_bad || name.m_bad;
        return text;
    }

    void jump(quint32 offset) { m_offset = offset; }

private:
    QByteArrayView m_chunk;
    quint32 m_offset;
    quint32 m_limit;
    bool m_bad = false;
};

class Compiler
{
public:
    Compiler(QByteArrayView chunk, quint32 offset, quint32 limit, Place place, bool inTemplate)
        : m_chunk(chunk)
        , m_cursor(chunk, offset, limit)
        , m_inTemplate(inTemplate)
    {
        m_open.push_back({place, false});
    }

    Program run()
    {
        while (!m_cursor.atEnd() && step()) { }
        return std::move(m_program);
    }

private:
    struct Element
    {
        Place place;
        bool hasElements;
    };

    Place place() const
    {
        return m_attribute != Place::Other || m_inAttributes ? m_attribute : m_open.back().place;
    }

    bool step();
    bool structure(quint8 kind);
    bool open(bool attributes);
    bool close();
    void attribute();
    void literal(QString text);
    void substitution(bool optional);
    bool instance();

    QByteArrayView m_chunk;
    Cursor m_cursor;
    bool m_inTemplate;
    std::vector<Element> m_open;
    bool m_inAttributes = false;
    Place m_attribute = Place::Other;
    Program m_program;
};

/// Takes one token; false at the end of the fragment and where it is damaged.
bool Compiler::step()
{
    const quint8 kind = m_cursor.take<quint8>();
    switch (kind & quint8(~token::MoreFlag)) {
    case token::Text: {
        if (m_cursor.take<quint8>() != value_type::String)
            return false;
        literal(m_cursor.takeText());
        break;
    }
    case token::CData:
        literal(m_cursor.takeText());
        break;
    case token::CharReference:
        literal(QString(QChar(m_cursor.take<quint16>())));
        break;
    case token::EntityReference: {
        const QString name = m_cursor.takeName();
        constexpr std::array<std::pair<QStringView, char16_t>, 5> entities
            = {{{u"amp", u'&'}, {u"lt", u'<'}, {u"gt", u'>'}, {u"quot", u'"'}, {u"apos", u'\''}}};
        for (const auto& [entity, unit] : entities) {
            if (entity == name)
                literal(QString(QChar(unit)));
        }
        break;
    }
    case token::InstructionTarget:
        m_cursor.takeName();
        break;
    case token::InstructionData:
        m_cursor.takeText();
        break;
    case token::Substitution:
    case token::OptionalSubstitution:
        substitution((kind & token::OptionalSubstitution) == token::OptionalSubstitution);
        break;
    default:
        return structure(kind);
    }
    return !m_cursor.isBad();
}

bool Compiler::structure(quint8 kind)
{
    switch (kind & quint8(~token::MoreFlag)) {
    case token::FragmentHeader:
        return m_cursor.skip(3);
    case token::OpenElement:
        return open((kind & token::MoreFlag) != 0);
    case token::Attribute:
        attribute();
        return !m_cursor.isBad();
    case token::CloseStart:
        m_inAttributes = false;
        m_attribute = Place::Other;
        return true;
    case token::CloseEmpty:
    case token::EndElement:
        return close();
    case token::TemplateInstance:
        return instance();
    default:
        return false;
    }
}

bool Compiler::open(bool attributes)
{
    constexpr quint32 DependencySize = 2;
    constexpr quint32 LengthSize = 4;
    // Only the elements of a template carry the number of the value that they depend on.
    if (m_inTemplate)
        m_cursor.skip(DependencySize);
    m_cursor.skip(LengthSize);
    const QString name = m_cursor.takeName();
    if (attributes)
        m_cursor.skip(LengthSize);
    if (m_cursor.isBad() || m_open.size() >= MaximumDepth)
        return false;
    m_open.back().hasElements = true;
    const Place place = elementPlace(m_open.back().place, name);
    m_open.push_back({place, false});
    m_inAttributes = true;
    m_attribute = Place::Other;
    if (place == Place::EventData || place == Place::UserData)
        m_program.push_back({Step::Kind::Body});
    else if (isString(place))
        m_program.push_back({Step::Kind::BeginString});
    return true;
}

bool Compiler::close()
{
    if (m_open.size() < 2)
        return false;
    // Of items within items only the innermost are strings.
    if (isString(m_open.back().place) && !m_open.back().hasElements)
        m_program.push_back({Step::Kind::EndString});
    m_open.pop_back();
    m_inAttributes = false;
    m_attribute = Place::Other;
    return true;
}

void Compiler::attribute()
{
    m_inAttributes = true;
    m_attribute = follow(Attributes, m_open.back().place, m_cursor.takeName());
}

void Compiler::literal(QString text)
{
    const Place target = place();
    if (target == Place::Other || text.isEmpty())
        return;
    if (!m_program.empty() && m_program.back().kind == Step::Kind::Literal
        && m_program.back().place == target)
        m_program.back().literal.append(text);
    else
        m_program.push_back({Step::Kind::Literal, target, 0, false, std::move(text)});
}

void Compiler::substitution(bool optional)
{
    const quint32 index = m_cursor.take<quint16>();
    m_cursor.take<quint8>();
    if (place() != Place::Other)
        m_program.push_back({Step::Kind::Substitution, place(), index, optional});
}

bool Compiler::instance()
{
    const quint32 at = m_cursor.offset() - 1;
    const auto found = readInstance(m_chunk, at, m_cursor.limit());
    if (!found)
        return false;
    m_program.push_back({Step::Kind::Instance, place(), at});
    m_open.back().hasElements = true;
    m_cursor.jump(found->end);
    return true;
}

} // namespace

std::optional<Instance> readInstance(QByteArrayView chunk, quint32 offset, quint32 limit)
{
    constexpr quint32 TokenVersionAndId = 6;
    constexpr quint32 DefinitionSizeOffset = 20;
    constexpr quint32 DescriptorSize = 4;
    Cursor cursor(chunk, offset, limit);
    cursor.skip(TokenVersionAndId);
    Instance instance;
    instance.definition = cursor.take<quint32>();
    if (cursor.isBad())
        return std::nullopt;
    if (instance.definition == cursor.offset()) {
        cursor.skip(DefinitionSizeOffset);
        const quint32 size = cursor.take<quint32>();
        if (!cursor.skip(size))
            return std::nullopt;
    }
    instance.values = cursor.offset();
    const quint32 count = cursor.take<quint32>();
    if (cursor.isBad() || count > (cursor.limit() - cursor.offset()) / DescriptorSize)
        return std::nullopt;
    quint32 size = 0;
    for (quint32 i = 0; i < count; ++i) {
        size += cursor.take<quint16>();
        cursor.skip(2);
    }
    instance.end = cursor.skip(size) ? cursor.offset() : cursor.limit();
    return instance;
}

Program compile(QByteArrayView chunk, quint32 offset, quint32 limit, Place place)
{
    return Compiler(chunk, offset, limit, place, false).run();
}

Program compileTemplate(QByteArrayView chunk, quint32 definition, Place place)
{
    const quint32 chunkSize = quint32(chunk.size());
    if (definition >= chunkSize || chunkSize - definition < DefinitionHeaderSize)
        return {};
    const quint32 start = definition + DefinitionHeaderSize;
    const quint32 size = qFromLittleEndian<quint32>(chunk.data() + start - 4);
    return Compiler(chunk, start, start + std::min(size, chunkSize - start), place, true).run();
}

} // namespace quoril::evtx
