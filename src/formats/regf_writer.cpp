#include "formats/regf_writer.h"

#include "formats/regf_bytes.h"

#include <algorithm>
#include <cstring>

namespace quoril::regf {

namespace {

/// A leaf of a subkey list fits into one bin of 4,096 bytes; more keys get an index of leaves.
constexpr std::size_t LeafLimit = 507;
constexpr quint32 FirstWithHashes = 5;
constexpr quint32 FirstWithSegments = 4;

/// Grows bins and cells in one buffer. Offsets count from the first bin.
class CellBuffer
{
public:
    explicit CellBuffer(quint64 filetime) : m_filetime(filetime) { }

    /// A new zeroed cell for `size` bytes of content.
    quint32 allocate(std::size_t size)
    {
        const std::size_t whole = (size + 4 + 7) / 8 * 8;
        if (whole > m_binEnd - m_used)
            openBin(whole);
        const std::size_t cell = m_used;
        put(cell, qint32(-qint64(whole)));
        m_used += whole;
        return quint32(cell);
    }

    template <typename Number> void set(quint32 cell, std::size_t place, Number number)
    {
        put(cell + 4 + place, number);
    }

    void setBytes(quint32 cell, std::size_t place, const void* bytes, std::size_t size)
    {
        if (size > 0)
            std::memcpy(m_bytes.data() + qsizetype(cell + 4 + place), bytes, size);
    }

    void setSignature(quint32 cell, const char* two) { setBytes(cell, 0, two, 2); }

    QByteArray finish()
    {
        closeBin();
        return std::move(m_bytes);
    }

    std::size_t size() const { return m_binEnd; }

private:
    template <typename Number> void put(std::size_t place, Number number)
    {
        qToLittleEndian(number, m_bytes.data() + qsizetype(place));
    }

    void closeBin()
    {
        if (m_used < m_binEnd)
            put(m_used, qint32(m_binEnd - m_used)); // what is left is one free cell
    }

    void openBin(std::size_t content)
    {
        closeBin();
        const std::size_t size = (content + bin::Header + bin::Unit - 1) / bin::Unit * bin::Unit;
        const std::size_t start = m_binEnd;
        const qsizetype end = qsizetype(start) + qsizetype(size);
        if (m_bytes.capacity() < end)
            m_bytes.reserve(std::max(end + end / 2, qsizetype(1) << 20));
        m_bytes.resize(end);
        std::memset(m_bytes.data() + qsizetype(start), 0, size);
        std::memcpy(m_bytes.data() + qsizetype(start), "hbin", 4);
        put(start + 4, quint32(start));
        put(start + 8, quint32(size));
        if (start == 0)
            put(start + 20, m_filetime);
        m_used = start + bin::Header;
        m_binEnd = start + size;
    }

    quint64 m_filetime;
    QByteArray m_bytes;
    std::size_t m_used = 0;
    std::size_t m_binEnd = 0;
};

bool storedAsLatin(QStringView name, bool wanted)
{
    return wanted
        && std::all_of(name.utf16(), name.utf16() + name.size(), [](char16_t unit) { return unit < 0x100; });
}

QByteArray storedName(QStringView name, bool latin)
{
    if (latin || name.isEmpty())
        return name.toLatin1();
    QByteArray bytes(name.size() * 2, Qt::Uninitialized);
    qToLittleEndian<char16_t>(name.utf16(), name.size(), bytes.data());
    return bytes;
}

class HiveWriter
{
public:
    HiveWriter(const Image& image, quint64 filetime)
        : m_image(image)
        , m_cells(filetime)
        , m_minor(image.baseNumber(base::MinorVersion))
        , m_security(image.securities().size())
    {
    }

    quint32 writeKey(const Key& key, quint32 parent);
    void linkSecurity();
    bool tooLarge() const { return m_cells.size() > 0x7FFF0000U; }
    QByteArray finish() { return m_cells.finish(); }

private:
    struct Security
    {
        quint32 cell = NoOffset;
        quint32 references = 0;
    };

    void writeClass(quint32 cell, const QString& name);
    void writeValues(quint32 cell, const std::vector<Value>& values);
    quint32 writeValue(const Value& value);
    quint32 writeData(const QByteArray& data);
    quint32 writeBlock(const char* bytes, std::size_t size);
    void writeChildren(quint32 cell, const Key& key);
    quint32 writeLeaf(const Key& key, std::size_t first, std::span<const quint32> cells);
    quint32 securityCell(int index);

    const Image& m_image;
    CellBuffer m_cells;
    quint32 m_minor;
    std::vector<Security> m_security;
};

quint32 HiveWriter::writeKey(const Key& key, quint32 parent)
{
    const Key::Header& header = key.header();
    const bool latin = storedAsLatin(header.name, header.flags & Key::LatinNameFlag);
    const QByteArray name = storedName(header.name, latin);
    const quint32 cell = m_cells.allocate(nk::Name + std::size_t(name.size()));
    m_cells.setSignature(cell, "nk");
    const auto nameFlag = latin ? Key::LatinNameFlag : quint16(0);
    m_cells.set(cell, nk::Flags, quint16((header.flags & ~Key::LatinNameFlag) | nameFlag));
    m_cells.set(cell, nk::Timestamp, header.timestamp);
    m_cells.set(cell, nk::Access, header.access);
    m_cells.set(cell, nk::Parent, parent);
    m_cells.set(cell, nk::SubkeyList, NoOffset);
    m_cells.set(cell, nk::VolatileList, NoOffset);
    m_cells.set(cell, nk::ValueList, NoOffset);
    m_cells.set(cell, nk::Class, NoOffset);
    m_cells.set(cell, nk::Security, securityCell(header.security));
    m_cells.set(cell, nk::UserFlags, header.userFlags);
    m_cells.set(cell, nk::NameSize, quint16(name.size()));
    m_cells.setBytes(cell, nk::Name, name.constData(), std::size_t(name.size()));
    writeClass(cell, header.className);
    writeValues(cell, key.values());
    writeChildren(cell, key);
    return cell;
}

void HiveWriter::writeClass(quint32 cell, const QString& name)
{
    if (name.isEmpty())
        return;
    const QByteArray bytes = storedName(name, false);
    m_cells.set(cell, nk::ClassSize, quint16(bytes.size()));
    m_cells.set(cell, nk::Class, writeBlock(bytes.constData(), std::size_t(bytes.size())));
}

void HiveWriter::writeValues(quint32 cell, const std::vector<Value>& values)
{
    if (values.empty())
        return;
    const quint32 list = m_cells.allocate(values.size() * 4);
    qsizetype longestName = 0;
    qsizetype longestData = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        m_cells.set(list, i * 4, writeValue(values[i]));
        longestName = std::max(longestName, values[i].name.size());
        longestData = std::max(longestData, values[i].data.size());
    }
    m_cells.set(cell, nk::ValueCount, quint32(values.size()));
    m_cells.set(cell, nk::ValueList, list);
    m_cells.set(cell, nk::LongestValueName, quint32(longestName * 2));
    m_cells.set(cell, nk::LongestData, quint32(longestData));
}

quint32 HiveWriter::writeValue(const Value& value)
{
    const bool latin = storedAsLatin(value.name, value.flags & vk::LatinNameFlag);
    const QByteArray name = storedName(value.name, latin);
    const quint32 cell = m_cells.allocate(vk::Name + std::size_t(name.size()));
    m_cells.setSignature(cell, "vk");
    m_cells.set(cell, vk::NameSize, quint16(name.size()));
    m_cells.set(cell, vk::Type, value.type);
    const auto nameFlag = latin ? vk::LatinNameFlag : quint16(0);
    m_cells.set(cell, vk::Flags, quint16((value.flags & ~vk::LatinNameFlag) | nameFlag));
    m_cells.setBytes(cell, vk::Name, name.constData(), std::size_t(name.size()));
    const auto size = quint32(value.data.size());
    if (size <= vk::InlineLimit) {
        m_cells.set(cell, vk::DataSize, size | vk::InlineFlag);
        m_cells.setBytes(cell, vk::Data, value.data.constData(), size);
    } else {
        m_cells.set(cell, vk::DataSize, size);
        m_cells.set(cell, vk::Data, writeData(value.data));
    }
    return cell;
}

quint32 HiveWriter::writeBlock(const char* bytes, std::size_t size)
{
    const quint32 cell = m_cells.allocate(size);
    m_cells.setBytes(cell, 0, bytes, size);
    return cell;
}

quint32 HiveWriter::writeData(const QByteArray& data)
{
    const auto size = std::size_t(data.size());
    if (size <= SegmentLength || m_minor < FirstWithSegments)
        return writeBlock(data.constData(), size);
    const std::size_t count = (size + SegmentLength - 1) / SegmentLength;
    const quint32 header = m_cells.allocate(12);
    const quint32 list = m_cells.allocate(count * 4);
    m_cells.setSignature(header, "db");
    m_cells.set(header, 2, quint16(count));
    m_cells.set(header, 4, list);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t start = i * SegmentLength;
        const std::size_t length = std::min<std::size_t>(SegmentLength, size - start);
        // Windows keeps four bytes more in each segment's cell than it uses.
        const quint32 segment = m_cells.allocate(length + 4);
        m_cells.setBytes(segment, 0, data.constData() + start, length);
        m_cells.set(list, i * 4, segment);
    }
    return header;
}

void HiveWriter::writeChildren(quint32 cell, const Key& key)
{
    const std::size_t count = key.childCount();
    if (count == 0)
        return;
    std::vector<quint32> cells(count);
    qsizetype longestName = 0;
    qsizetype longestClass = 0;
    for (std::size_t i = 0; i < count && !tooLarge(); ++i) {
        const Key& child = *key.childAt(i);
        cells[i] = writeKey(child, cell);
        longestName = std::max(longestName, child.name().size());
        longestClass = std::max(longestClass, child.className().size());
    }
    std::vector<quint32> leaves;
    for (std::size_t first = 0; first < count; first += LeafLimit)
        leaves.push_back(
            writeLeaf(key, first, std::span(cells).subspan(first, std::min(LeafLimit, count - first))));
    quint32 list = leaves.front();
    if (leaves.size() > 1) {
        list = m_cells.allocate(4 + leaves.size() * 4);
        m_cells.setSignature(list, "ri");
        m_cells.set(list, 2, quint16(leaves.size()));
        for (std::size_t i = 0; i < leaves.size(); ++i)
            m_cells.set(list, 4 + i * 4, leaves[i]);
    }
    m_cells.set(cell, nk::SubkeyCount, quint32(count));
    m_cells.set(cell, nk::SubkeyList, list);
    m_cells.set(cell, nk::LongestSubkey, quint16(std::min<qsizetype>(longestName * 2, 0xFFFF)));
    m_cells.set(cell, nk::LongestClass, quint32(longestClass * 2));
}

quint32 nameHash(QStringView name)
{
    quint32 hash = 0;
    for (qsizetype i = 0; i < name.size(); ++i)
        hash = hash * 37 + upcase(name.utf16()[i]);
    return hash;
}

/// The older lists keep the first four characters of a name instead, zero where one is not in Latin-1.
quint32 nameHint(QStringView name)
{
    quint32 hint = 0;
    for (qsizetype i = 0; i < std::min<qsizetype>(name.size(), 4); ++i) {
        const char16_t unit = name.utf16()[i];
        if (unit > 0xFF)
            break;
        hint |= quint32(unit) << (8 * i);
    }
    return hint;
}

quint32 HiveWriter::writeLeaf(const Key& key, std::size_t first, std::span<const quint32> cells)
{
    const bool hashed = m_minor >= FirstWithHashes;
    const quint32 leaf = m_cells.allocate(4 + cells.size() * 8);
    m_cells.setSignature(leaf, hashed ? "lh" : "lf");
    m_cells.set(leaf, 2, quint16(cells.size()));
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const QString& name = key.childAt(first + i)->name();
        m_cells.set(leaf, 4 + i * 8, cells[i]);
        m_cells.set(leaf, 8 + i * 8, hashed ? nameHash(name) : nameHint(name));
    }
    return leaf;
}

quint32 HiveWriter::securityCell(int index)
{
    if (index < 0)
        return NoOffset;
    Security& security = m_security[std::size_t(index)];
    ++security.references;
    if (security.cell != NoOffset)
        return security.cell;
    const QByteArray& descriptor = m_image.securities()[std::size_t(index)];
    const auto size = std::size_t(descriptor.size());
    security.cell = m_cells.allocate(sk::Descriptor + size);
    m_cells.setSignature(security.cell, "sk");
    m_cells.set(security.cell, sk::Size, quint32(size));
    m_cells.setBytes(security.cell, sk::Descriptor, descriptor.constData(), size);
    return security.cell;
}

void HiveWriter::linkSecurity()
{
    std::erase_if(m_security, [](const Security& security) { return security.cell == NoOffset; });
    const std::size_t count = m_security.size();
    for (std::size_t i = 0; i < count; ++i) {
        m_cells.set(m_security[i].cell, sk::Next, m_security[(i + 1) % count].cell);
        m_cells.set(m_security[i].cell, sk::Previous, m_security[(i + count - 1) % count].cell);
        m_cells.set(m_security[i].cell, sk::References, m_security[i].references);
    }
}

} // namespace

Result<QByteArray> writeHive(const Image& image, const Key& root, quint64 filetime)
{
    const quint32 sequence
        = std::max(image.baseNumber(base::PrimarySequence), image.baseNumber(base::SecondarySequence)) + 1;
    // Below the numbers of a log the new file would be taken for older than it.
    if (sequence == 0)
        return Error{error::RegistryCorrupt, QStringLiteral("the sequence numbers of the hive are used up")};
    HiveWriter writer(image, filetime);
    const quint32 rootCell = writer.writeKey(root, NoOffset);
    writer.linkSecurity();
    if (writer.tooLarge())
        return Error{error::InvalidParameter, QStringLiteral("the hive would be larger than 2 GB")};
    const QByteArray bins = writer.finish();
    QByteArray file = image.baseBlock();
    const auto put = [&](quint32 place, auto number) { qToLittleEndian(number, file.data() + place); };
    put(base::PrimarySequence, sequence);
    put(base::SecondarySequence, sequence);
    put(base::LastWritten, filetime);
    put(base::RootCell, rootCell);
    put(base::DataLength, quint32(bins.size()));
    put(base::Checksum, baseChecksum(file));
    return file.append(bins);
}

} // namespace quoril::regf
