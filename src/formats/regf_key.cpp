#include "formats/regf_key.h"

#include "formats/regf_bytes.h"
#include "formats/regf_image.h"

#include <algorithm>
#include <compare>

namespace quoril::regf {

namespace {

/// From so many names on, a map pays.
constexpr std::size_t IndexFrom = 12;

bool fitsLatin1(QStringView text)
{
    return std::all_of(text.utf16(), text.utf16() + text.size(), [](char16_t unit) { return unit < 0x100; });
}

} // namespace

Key::Key(Image& image, Header header, int depth, quint32 cell)
    : m_image(&image)
    , m_header(std::move(header))
    , m_depth(depth)
    , m_cell(cell)
    , m_childrenLoaded(cell == NoCell)
    , m_valuesLoaded(cell == NoCell)
{
}

Key::~Key() = default;

QByteArray Key::security() const
{
    return m_header.security < 0 ? QByteArray() : m_image->securities()[std::size_t(m_header.security)];
}

void Key::setSecurity(const QByteArray& descriptor)
{
    m_header.security = m_image->addSecurity(descriptor);
}

Key::Children& Key::children() const
{
    if (m_childrenLoaded)
        return m_children;
    m_childrenLoaded = true;
    const quint64 problemsBefore = m_image->problemCount();
    const std::vector<quint32> cells = m_image->readSubkeys(m_cell);
    if (!cells.empty() && m_depth >= MaximumDepth) {
        m_image->note(m_cell, "keys are nested too deeply");
        m_isWhole = false;
        return m_children;
    }
    m_children.reserve(cells.size());
    for (const quint32 cell : cells) {
        if (auto header = m_image->readKey(cell))
            m_children.push_back(std::make_unique<Key>(*m_image, std::move(*header), m_depth + 1, cell));
    }
    m_isWhole = m_isWhole && m_image->problemCount() == problemsBefore;
    return m_children;
}

const Key* Key::childAt(std::size_t index) const
{
    return index < children().size() ? m_children[index].get() : nullptr;
}

Key* Key::childAt(std::size_t index)
{
    return index < children().size() ? m_children[index].get() : nullptr;
}

Key* Key::lookUp(QStringView name) const
{
    const Children& all = children();
    if (all.size() < IndexFrom) {
        const auto found = std::find_if(
            all.begin(), all.end(), [&](const auto& key) { return foldedEquals(key->name(), name); });
        return found == all.end() ? nullptr : found->get();
    }
    if (!m_childIndex) {
        m_childIndex = std::make_unique<NameMap<Key*>>(all.size());
        for (const auto& key : all)
            m_childIndex->emplace(key->name(), key.get());
    }
    const auto found = m_childIndex->find(name);
    return found == m_childIndex->end() ? nullptr : found->second;
}

const Key* Key::find(QStringView path) const
{
    const Key* key = this;
    for (const QStringView part : path.tokenize(u'\\', Qt::SkipEmptyParts)) {
        key = key->lookUp(part);
        if (!key)
            return nullptr;
    }
    return key;
}

Key* Key::find(QStringView path)
{
    Key* key = this;
    for (const QStringView part : path.tokenize(u'\\', Qt::SkipEmptyParts)) {
        key = key->lookUp(part);
        if (!key)
            return nullptr;
    }
    return key;
}

Result<Key*> Key::addChild(QStringView name, quint64 filetime)
{
    if (Key* present = lookUp(name))
        return present;
    if (name.isEmpty() || name.size() > MaximumKeyName || name.contains(u'\\'))
        return Error{error::InvalidParameter, QStringLiteral("not a name for a key")};
    if (m_depth >= MaximumDepth)
        return Error{error::InvalidParameter, QStringLiteral("keys are nested too deeply")};
    Header header;
    header.name = name.toString();
    header.timestamp = filetime;
    header.flags = fitsLatin1(name) ? LatinNameFlag : quint16(0);
    header.security = m_header.security;
    const auto place = std::lower_bound(m_children.begin(), m_children.end(), name,
        [](const auto& key, QStringView wanted) { return std::is_lt(foldedCompare(key->name(), wanted)); });
    Key* added
        = m_children.insert(place, std::make_unique<Key>(*m_image, std::move(header), m_depth + 1, NoCell))
              ->get();
    if (m_childIndex)
        m_childIndex->emplace(added->name(), added);
    m_header.timestamp = filetime;
    return added;
}

Result<Key*> Key::addPath(QStringView path, quint64 filetime)
{
    Key* key = this;
    for (const QStringView part : path.tokenize(u'\\', Qt::SkipEmptyParts)) {
        const Result<Key*> next = key->addChild(part, filetime);
        if (!next)
            return next;
        key = *next;
    }
    return key;
}

bool Key::removeChild(QStringView name, quint64 filetime)
{
    const Key* removed = lookUp(name);
    if (!removed)
        return false;
    m_childIndex.reset();
    std::erase_if(m_children, [removed](const auto& key) { return key.get() == removed; });
    m_header.timestamp = filetime;
    return true;
}

std::vector<Value>& Key::loadedValues() const
{
    if (!m_valuesLoaded) {
        m_valuesLoaded = true;
        const quint64 problemsBefore = m_image->problemCount();
        m_values = m_image->readValues(m_cell);
        m_isWhole = m_isWhole && m_image->problemCount() == problemsBefore;
    }
    return m_values;
}

bool Key::isWhole() const
{
    children();
    loadedValues();
    return m_isWhole;
}

const std::vector<Value>& Key::values() const
{
    return loadedValues();
}

std::ptrdiff_t Key::valueIndex(QStringView name) const
{
    const std::vector<Value>& all = loadedValues();
    if (all.size() < IndexFrom) {
        const auto found = std::find_if(
            all.begin(), all.end(), [&](const Value& value) { return foldedEquals(value.name, name); });
        return found == all.end() ? -1 : found - all.begin();
    }
    if (!m_valueIndex) {
        m_valueIndex = std::make_unique<NameMap<std::size_t>>(all.size());
        for (std::size_t i = 0; i < all.size(); ++i)
            m_valueIndex->emplace(all[i].name, i);
    }
    const auto found = m_valueIndex->find(name);
    return found == m_valueIndex->end() ? -1 : std::ptrdiff_t(found->second);
}

const Value* Key::value(QStringView name) const
{
    const std::ptrdiff_t index = valueIndex(name);
    return index < 0 ? nullptr : &m_values[std::size_t(index)];
}

Status Key::setValue(QStringView name, quint32 type, const QByteArray& data, quint64 filetime)
{
    if (data.size() > MaximumData)
        return Error{error::InvalidParameter, QStringLiteral("the data of a value is too long")};
    const std::ptrdiff_t index = valueIndex(name);
    if (index >= 0) {
        m_values[std::size_t(index)].type = type;
        m_values[std::size_t(index)].data = data;
    } else {
        if (name.size() > MaximumValueName)
            return Error{error::InvalidParameter, QStringLiteral("the name of a value is too long")};
        const quint16 flags = !name.isEmpty() && fitsLatin1(name) ? vk::LatinNameFlag : quint16(0);
        m_values.push_back(Value{name.toString(), type, data, flags});
        if (m_valueIndex)
            m_valueIndex->emplace(m_values.back().name, m_values.size() - 1);
    }
    m_header.timestamp = filetime;
    return {};
}

bool Key::removeValue(QStringView name, quint64 filetime)
{
    const std::ptrdiff_t index = valueIndex(name);
    if (index < 0)
        return false;
    m_valueIndex.reset();
    m_values.erase(m_values.begin() + index);
    m_header.timestamp = filetime;
    return true;
}

} // namespace quoril::regf
