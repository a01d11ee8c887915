#include "formats/version_block.h"

#include <QIODevice>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

namespace quoril {

namespace {

/// Places in the headers of an executable, in bytes.
namespace header {
constexpr qint64 DosSize = 64;
constexpr qsizetype NewHeader = 0x3C;
constexpr qint64 CoffSize = 24; // with the signature before it
constexpr qsizetype SectionCount = 6;
constexpr qsizetype OptionalSize = 20;
constexpr qint64 SectionSize = 40;
constexpr quint16 Magic32 = 0x10B;
constexpr quint16 Magic64 = 0x20B;
constexpr qsizetype Directories32 = 96;
constexpr qsizetype Directories64 = 112;
constexpr qsizetype ResourceDirectory = 2;
} // namespace header

constexpr quint32 VersionType = 16;
constexpr quint32 VersionNumber = 1;
constexpr quint32 HighBit = 0x80000000;
/// A block counts its own length in 16 bits.
constexpr quint32 LongestBlock = 0x10000;

template <typename Number> Number numberAt(const QByteArray& bytes, qsizetype place)
{
    return qFromLittleEndian<Number>(bytes.constData() + place);
}

struct Section
{
    quint32 virtualSize;
    quint32 address;
    quint32 rawSize;
    quint32 rawOffset;
};

struct DirectoryEntry
{
    quint32 name;
    quint32 target;
};

Error damaged()
{
    return {error::BadExeFormat, {}};
}

/// Reads an executable piece by piece; every piece is checked against the file's end.
class PeImage
{
public:
    explicit PeImage(QIODevice& file) : m_file(file) { }

    Status readHeaders();
    Result<QByteArray> versionBlock() const;

private:
    std::optional<QByteArray> read(qint64 offset, qint64 size) const
    {
        if (size > m_file.size() || offset > m_file.size() - size || !m_file.seek(offset))
            return std::nullopt;
        QByteArray bytes = m_file.read(size);
        return bytes.size() == size ? std::optional(bytes) : std::nullopt;
    }
    /// The bytes at an address of the loaded image, as far as one section holds them in the file.
    std::optional<QByteArray> readAddress(quint64 address, quint32 size) const;
    Result<std::vector<DirectoryEntry>> directory(quint32 offset) const;
    /// The directory below the one at the offset that has the number for its name.
    Result<quint32> subdirectory(quint32 offset, quint32 number, quint32 missing) const;

    QIODevice& m_file;
    std::vector<Section> m_sections;
    quint32 m_resources = 0;
};

Status PeImage::readHeaders()
{
    const auto dos = read(0, header::DosSize);
    if (!dos || !dos->startsWith("MZ"))
        return damaged();
    const qint64 start = numberAt<quint32>(*dos, header::NewHeader);
    const auto coff = read(start, header::CoffSize);
    if (!coff || !coff->startsWith(QByteArrayView("PE\0\0", 4)))
        return damaged();
    const auto optional = read(start + header::CoffSize, numberAt<quint16>(*coff, header::OptionalSize));
    if (!optional || optional->size() < 2)
        return damaged();
    const auto magic = numberAt<quint16>(*optional, 0);
    if (magic != header::Magic32 && magic != header::Magic64)
        return damaged();
    const qsizetype directories = magic == header::Magic32 ? header::Directories32 : header::Directories64;
    const qsizetype place = directories + 8 * header::ResourceDirectory;
    if (optional->size() < place + 8
        || numberAt<quint32>(*optional, directories - 4) <= header::ResourceDirectory)
        return Error{error::ResourceDataNotFound, {}};
    m_resources = numberAt<quint32>(*optional, place);
    if (m_resources == 0)
        return Error{error::ResourceDataNotFound, {}};

    const qint64 count = numberAt<quint16>(*coff, header::SectionCount);
    const auto sections = read(start + header::CoffSize + optional->size(), count * header::SectionSize);
    if (!sections)
        return damaged();
    for (qsizetype at = 0; at < sections->size(); at += header::SectionSize) {
        m_sections.push_back({numberAt<quint32>(*sections, at + 8), numberAt<quint32>(*sections, at + 12),
            numberAt<quint32>(*sections, at + 16), numberAt<quint32>(*sections, at + 20)});
    }
    return {};
}

std::optional<QByteArray> PeImage::readAddress(quint64 address, quint32 size) const
{
    if (size == 0)
        return QByteArray();
    const auto holds = [&](const Section& section) {
        return address >= section.address
            && address - section.address < std::max(section.virtualSize, section.rawSize);
    };
    const auto section = std::ranges::find_if(m_sections, holds);
    if (section == m_sections.end())
        return std::nullopt;
    const quint64 inside = address - section->address;
    if (inside + size > section->rawSize)
        return std::nullopt;
    return read(qint64(section->rawOffset + inside), size);
}

Result<std::vector<DirectoryEntry>> PeImage::directory(quint32 offset) const
{
    constexpr quint32 headerSize = 16;
    constexpr quint32 entrySize = 8;
    const quint64 address = quint64(m_resources) + offset;
    const auto head = readAddress(address, headerSize);
    if (!head)
        return damaged();
    const quint32 count = numberAt<quint16>(*head, 12) + numberAt<quint16>(*head, 14);
    const auto bytes = readAddress(address + headerSize, count * entrySize);
    if (!bytes)
        return damaged();
    std::vector<DirectoryEntry> entries;
    for (qsizetype at = 0; at < bytes->size(); at += entrySize)
        entries.push_back({numberAt<quint32>(*bytes, at), numberAt<quint32>(*bytes, at + 4)});
    return entries;
}

Result<quint32> PeImage::subdirectory(quint32 offset, quint32 number, quint32 missing) const
{
    const auto entries = directory(offset);
    if (!entries)
        return entries.failure();
    const auto found = std::ranges::find(*entries, number, &DirectoryEntry::name);
    if (found == entries->end())
        return Error{missing, {}};
    return found->target & HighBit ? Result<quint32>(found->target & ~HighBit) : damaged();
}

Result<QByteArray> PeImage::versionBlock() const
{
    const auto type = subdirectory(0, VersionType, error::ResourceTypeNotFound);
    if (!type)
        return type.failure();
    const auto number = subdirectory(*type, VersionNumber, error::ResourceNameNotFound);
    if (!number)
        return number.failure();
    const auto languages = directory(*number);
    if (!languages)
        return languages.failure();
    if (languages->empty())
        return Error{error::ResourceDataNotFound, {}};
    quint32 target = languages->front().target;
    for (const quint32 wanted : {0x409u, 0u}) {
        const auto found = std::ranges::find(*languages, wanted, &DirectoryEntry::name);
        target = found == languages->end() ? target : found->target;
    }
    constexpr quint32 dataEntrySize = 16;
    const auto entry
        = target & HighBit ? std::nullopt : readAddress(quint64(m_resources) + target, dataEntrySize);
    if (!entry)
        return damaged();
    const auto size = std::min(numberAt<quint32>(*entry, 4), LongestBlock);
    const auto block = readAddress(numberAt<quint32>(*entry, 0), size);
    return block ? Result<QByteArray>(*block) : damaged();
}

} // namespace

Result<QByteArray> readVersionBlock(QIODevice& file)
{
    PeImage image(file);
    if (Status status = image.readHeaders(); !status)
        return status.failure();
    return image.versionBlock();
}

} // namespace quoril
