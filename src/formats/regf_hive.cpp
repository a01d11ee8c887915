#include "formats/regf_hive.h"

#include "formats/regf_image.h"
#include "formats/regf_writer.h"

#include <QtEndian>

namespace quoril::regf {

namespace {

Error corrupt(const QString& detail)
{
    return {error::RegistryCorrupt, detail};
}

/// Owner and group: administrators. Full access for the system and administrators, reading for users; all
/// of it inherited by subkeys. Self-relative, as it lies in the file.
constexpr uchar DefaultSecurity[] = {
    0x01, 0x00, 0x04, 0x80, 0x60, 0x00, 0x00, 0x00, 0x70, 0x00, 0x00, 0x00, 0, 0, 0, 0, 0x14, 0x00, 0x00,
    0x00, //
    0x02, 0x00, 0x4C, 0x00, 0x03, 0x00, 0x00, 0x00, // list of three entries
    0x00, 0x02, 0x14, 0x00, 0x3F, 0x00, 0x0F, 0x00, 1, 1, 0, 0, 0, 0, 0, 5, 0x12, 0, 0, 0, // S-1-5-18
    0x00, 0x02, 0x18, 0x00, 0x3F, 0x00, 0x0F, 0x00, 1, 2, 0, 0, 0, 0, 0, 5, 0x20, 0, 0, 0, 0x20, 2, 0,
    0, // S-1-5-32-544
    0x00, 0x02, 0x18, 0x00, 0x19, 0x00, 0x02, 0x00, 1, 2, 0, 0, 0, 0, 0, 5, 0x20, 0, 0, 0, 0x21, 2, 0,
    0, // S-1-5-32-545
    1, 2, 0, 0, 0, 0, 0, 5, 0x20, 0, 0, 0, 0x20, 2, 0, 0, // owner
    1, 2, 0, 0, 0, 0, 0, 5, 0x20, 0, 0, 0, 0x20, 2, 0, 0, // group
};
static_assert(sizeof DefaultSecurity == 0x80);

QByteArray newBaseBlock(quint64 filetime)
{
    QByteArray block(base::Size, '\0');
    block.replace(0, 4, "regf");
    const auto put = [&](quint32 place, auto number) { qToLittleEndian(number, block.data() + place); };
    put(base::PrimarySequence, quint32(1));
    put(base::SecondarySequence, quint32(1));
    put(base::LastWritten, filetime);
    put(base::MajorVersion, quint32(1));
    put(base::MinorVersion, quint32(5));
    put(base::FileFormat, quint32(1));
    put(base::Clustering, quint32(1));
    return block;
}

/// Touches all of a hive, so that all damage is known.
void readAll(const Key& key)
{
    (void)key.values();
    for (std::size_t i = 0; i < key.childCount(); ++i)
        readAll(*key.childAt(i));
}

} // namespace

Hive::Hive(std::unique_ptr<Image> image, std::unique_ptr<Key> root)
    : m_image(std::move(image))
    , m_root(std::move(root))
{
}

Hive::Hive(Hive&&) noexcept = default;

Hive& Hive::operator=(Hive&& other) noexcept
{
    m_root = std::move(other.m_root);
    m_image = std::move(other.m_image);
    return *this;
}

Hive::~Hive() = default;

Result<Hive> Hive::parse(const QByteArray& bytes)
{
    return parseImage(bytes, bytes);
}

Result<Hive> Hive::parse(const ZeroedBytes& bytes)
{
    return parseImage(bytes, {bytes.data(), qsizetype(bytes.size())});
}

template <typename Bytes> Result<Hive> Hive::parseImage(const Bytes& bytes, QByteArrayView view)
{
    if (view.size() < qsizetype(base::Size) || !view.startsWith("regf"))
        return corrupt(QStringLiteral("not a registry hive: no base block"));
    const auto number = [&](quint32 place) { return qFromLittleEndian<quint32>(view.data() + place); };
    if (baseChecksum(QByteArray::fromRawData(view.data(), base::Size)) != number(base::Checksum))
        return corrupt(QStringLiteral("the base block of the hive has a bad checksum"));
    if (number(base::MajorVersion) != 1 || number(base::MinorVersion) > 6 || number(base::FileFormat) != 1)
        return corrupt(QStringLiteral("a hive of an unknown version"));
    auto image = std::make_unique<Image>(bytes);
    const quint32 rootCell = number(base::RootCell);
    auto header = image->readKey(rootCell);
    if (!header)
        return corrupt(QStringLiteral("the hive has no root key"));
    auto root = std::make_unique<Key>(*image, std::move(*header), 0, rootCell);
    return Hive(std::move(image), std::move(root));
}

Hive Hive::create(const QString& rootName, quint64 filetime)
{
    auto image = std::make_unique<Image>(newBaseBlock(filetime));
    Key::Header header;
    header.name = rootName;
    header.timestamp = filetime;
    header.flags = Key::RootFlag | Key::NoDeleteFlag | Key::LatinNameFlag;
    header.security = image->addSecurity(
        QByteArray(reinterpret_cast<const char*>(DefaultSecurity), qsizetype(sizeof DefaultSecurity)));
    auto root = std::make_unique<Key>(*image, std::move(header), 0, NoOffset);
    return Hive(std::move(image), std::move(root));
}

bool Hive::notShutDownCleanly() const
{
    return m_image->baseNumber(base::PrimarySequence) != m_image->baseNumber(base::SecondarySequence);
}

quint64 Hive::lastWritten() const
{
    return m_image->lastWritten();
}

bool Hive::damaged() const
{
    return !problems().isEmpty();
}

const QStringList& Hive::problems() const
{
    return m_image->problems();
}

Status Hive::rewritable() const
{
    readAll(*m_root);
    if (damaged())
        return corrupt(QStringLiteral("the hive is damaged and is not changed: %1").arg(problems().first()));
    return {};
}

Result<QByteArray> Hive::serialize(quint64 filetime) const
{
    if (const Status whole = rewritable(); !whole)
        return whole.failure();
    return writeHive(*m_image, *m_root, filetime);
}

} // namespace quoril::regf
