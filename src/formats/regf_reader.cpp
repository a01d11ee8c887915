// How keys, subkey lists, values and security are read from the cells of a hive.

#include "formats/regf_bytes.h"
#include "formats/regf_image.h"

#include <algorithm>

namespace quoril::regf {

namespace {

QByteArray copyOf(Image::Bytes bytes)
{
    return {reinterpret_cast<const char*>(bytes.data()), qsizetype(bytes.size())};
}

} // namespace

QString Image::nameOf(Bytes bytes, bool latin)
{
    if (!latin)
        return unitsOf(bytes);
    const QLatin1StringView name(reinterpret_cast<const char*>(bytes.data()), qsizetype(bytes.size()));
    if (name.isEmpty())
        return name;
    const std::size_t place = bytes.size() * 31 + bytes.front() * 7 + bytes.back();
    QString& known = m_frequentNames[place % m_frequentNames.size()];
    if (known != name)
        known = name;
    return known;
}

std::optional<Key::Header> Image::readKey(quint32 offset)
{
    const Bytes cell = take(offset, nk::Name, "no key here, or one that is referred to twice");
    if (cell.empty())
        return std::nullopt;
    const auto nameSize = numberAt<quint16>(cell, nk::NameSize);
    if (!hasSignature(cell, 'n', 'k') || nameSize > cell.size() - nk::Name) {
        note(offset, "a damaged key");
        return std::nullopt;
    }
    Key::Header header;
    header.flags = numberAt<quint16>(cell, nk::Flags);
    header.timestamp = numberAt<quint64>(cell, nk::Timestamp);
    header.access = numberAt<quint32>(cell, nk::Access);
    header.userFlags = numberAt<quint16>(cell, nk::UserFlags);
    header.name = nameOf(cell.subspan(nk::Name, nameSize), header.flags & Key::LatinNameFlag);
    const auto classSize = numberAt<quint16>(cell, nk::ClassSize);
    const auto classCell = numberAt<quint32>(cell, nk::Class);
    if (classSize > 0 && classCell != NoOffset) {
        const Bytes name = take(classCell, classSize, "a damaged class name");
        if (!name.empty())
            header.className = unitsOf(name.first(classSize));
    }
    if (const auto securityCell = numberAt<quint32>(cell, nk::Security); securityCell != NoOffset)
        header.security = readSecurity(securityCell);
    return header;
}

int Image::readSecurity(quint32 offset)
{
    if (const auto known = m_securityByOffset.find(offset); known != m_securityByOffset.end())
        return known->second;
    int index = -1;
    const Bytes cell = take(offset, sk::Descriptor, "a damaged security descriptor");
    if (!cell.empty()) {
        const auto size = numberAt<quint32>(cell, sk::Size);
        if (hasSignature(cell, 's', 'k') && size <= cell.size() - sk::Descriptor)
            index = addSecurity(copyOf(cell.subspan(sk::Descriptor, size)));
        else
            note(offset, "a damaged security descriptor");
    }
    m_securityByOffset.emplace(offset, index);
    return index;
}

std::vector<quint32> Image::readSubkeys(quint32 keyCell)
{
    const Bytes cell = cellAt(keyCell);
    const auto count = numberAt<quint32>(cell, nk::SubkeyCount);
    std::vector<quint32> keys;
    if (count == 0)
        return keys;
    readList(numberAt<quint32>(cell, nk::SubkeyList), false, keys);
    if (keys.size() != count)
        note(keyCell, "the subkeys are not as many as stated");
    return keys;
}

void Image::readList(quint32 offset, bool nested, std::vector<quint32>& keys)
{
    const Bytes cell = take(offset, 4, "no subkey list here, or one that is referred to twice");
    if (cell.empty())
        return;
    const bool hashed = hasSignature(cell, 'l', 'f') || hasSignature(cell, 'l', 'h');
    const bool index = hasSignature(cell, 'r', 'i');
    // An index of indexes is never written by Windows.
    if ((!hashed && !index && !hasSignature(cell, 'l', 'i')) || (index && nested))
        return note(offset, "a damaged subkey list");
    const std::size_t step = hashed ? 8 : 4;
    const std::size_t count = numberAt<quint16>(cell, 2);
    const std::size_t fitting = std::min(count, (cell.size() - 4) / step);
    if (fitting < count)
        note(offset, "a subkey list longer than its cell");
    for (std::size_t i = 0; i < fitting; ++i) {
        const auto entry = numberAt<quint32>(cell, 4 + i * step);
        if (index)
            readList(entry, true, keys);
        else
            keys.push_back(entry);
    }
}

std::vector<Value> Image::readValues(quint32 keyCell)
{
    const Bytes cell = cellAt(keyCell);
    std::vector<Value> values;
    const std::size_t count = numberAt<quint32>(cell, nk::ValueCount);
    if (count == 0)
        return values;
    const auto listCell = numberAt<quint32>(cell, nk::ValueList);
    const Bytes list = take(listCell, 4, "no value list here, or one that is referred to twice");
    const std::size_t fitting = std::min(count, list.size() / 4);
    if (fitting < count)
        note(listCell, "a value list longer than its cell");
    values.reserve(fitting);
    for (std::size_t i = 0; i < fitting; ++i) {
        if (auto value = readValue(numberAt<quint32>(list, i * 4)))
            values.push_back(std::move(*value));
    }
    return values;
}

std::optional<Value> Image::readValue(quint32 offset)
{
    const Bytes cell = take(offset, vk::Name, "no value here, or one that is referred to twice");
    if (cell.empty())
        return std::nullopt;
    const auto nameSize = numberAt<quint16>(cell, vk::NameSize);
    if (!hasSignature(cell, 'v', 'k') || nameSize > cell.size() - vk::Name) {
        note(offset, "a damaged value");
        return std::nullopt;
    }
    Value value;
    value.flags = numberAt<quint16>(cell, vk::Flags);
    value.type = numberAt<quint32>(cell, vk::Type);
    value.name = nameOf(cell.subspan(vk::Name, nameSize), value.flags & vk::LatinNameFlag);
    const auto size = numberAt<quint32>(cell, vk::DataSize);
    if (size & vk::InlineFlag) {
        const quint32 length = size & ~vk::InlineFlag;
        if (length > vk::InlineLimit) {
            note(offset, "a value with too long data in its own cell");
            return std::nullopt;
        }
        value.data = copyOf(cell.subspan(vk::Data, length));
    } else if (size > 0) {
        auto data = readData(numberAt<quint32>(cell, vk::Data), size);
        if (!data)
            return std::nullopt;
        value.data = std::move(*data);
    }
    return value;
}

std::optional<QByteArray> Image::readData(quint32 offset, quint32 size)
{
    const Bytes cell = take(offset, std::min<std::size_t>(size, 8), "damaged value data");
    if (cell.empty())
        return std::nullopt;
    if (size <= cell.size())
        return copyOf(cell.first(size));
    // A segment table is never large enough for the data it stands for, so the two can't be mixed up.
    if (size > SegmentLength && hasSignature(cell, 'd', 'b'))
        return readSegments(cell, offset, size);
    note(offset, "value data longer than its cell");
    return std::nullopt;
}

std::optional<QByteArray> Image::readSegments(Bytes header, quint32 offset, quint32 size)
{
    const std::size_t count = numberAt<quint16>(header, 2);
    const Bytes list = take(numberAt<quint32>(header, 4), count * 4, "a damaged list of data segments");
    if (list.empty())
        return std::nullopt;
    QByteArray data;
    for (std::size_t i = 0; i < count && data.size() < qsizetype(size); ++i) {
        const std::size_t length = std::min<std::size_t>(SegmentLength, size - std::size_t(data.size()));
        const Bytes segment = take(numberAt<quint32>(list, i * 4), length, "a damaged data segment");
        if (segment.empty())
            return std::nullopt;
        data.append(reinterpret_cast<const char*>(segment.data()), qsizetype(length));
    }
    if (data.size() == qsizetype(size))
        return data;
    note(offset, "too few data segments");
    return std::nullopt;
}

} // namespace quoril::regf
