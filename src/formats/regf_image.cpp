#include "formats/regf_image.h"

#include "formats/regf_bytes.h"

namespace quoril::regf {

namespace {

constexpr qsizetype MostProblems = 100;

} // namespace

quint32 baseChecksum(const QByteArray& block)
{
    quint32 sum = 0;
    for (quint32 place = 0; place < base::Checksum; place += 4)
        sum ^= qFromLittleEndian<quint32>(block.constData() + place);
    if (sum == 0)
        return 1;
    return sum == 0xFFFFFFFF ? 0xFFFFFFFE : sum;
}

Image::Image(const ZeroedBytes& bytes) : Image(QByteArray::fromRawData(bytes.data(), qsizetype(bytes.size())))
{
    m_memory = bytes;
}

Image::Image(QByteArray bytes) : m_bytes(std::move(bytes))
{
    const qsizetype stated = qsizetype(base::Size) + baseNumber(base::DataLength);
    if (stated > m_bytes.size())
        note(quint32(m_bytes.size() - base::Size), "the file ends before its data");
    else if (stated < m_bytes.size())
        m_bytes.truncate(stated);
    m_budget = std::size_t(m_bytes.size()) - base::Size;
    m_taken.resize(m_budget / 8 + 1);
}

quint32 Image::baseNumber(quint32 place) const
{
    return qFromLittleEndian<quint32>(m_bytes.constData() + place);
}

quint64 Image::lastWritten() const
{
    return qFromLittleEndian<quint64>(m_bytes.constData() + base::LastWritten);
}

void Image::note(quint32 offset, const char* what)
{
    ++m_problemCount;
    if (m_problems.size() < MostProblems)
        m_problems += QStringLiteral("offset 0x%1: %2").arg(offset, 0, 16).arg(QLatin1StringView(what));
}

Image::Bytes Image::cellAt(quint32 offset) const
{
    const Bytes all(reinterpret_cast<const uchar*>(m_bytes.constData()), std::size_t(m_bytes.size()));
    const std::size_t start = std::size_t(offset) + base::Size;
    if (offset % 8 != 0 || start + 8 > all.size())
        return {};
    const auto stored = numberAt<qint32>(all, start);
    if (stored > -8) // a positive size marks a free cell
        return {};
    const auto size = std::size_t(-qint64(stored));
    return size <= all.size() - start ? all.subspan(start + 4, size - 4) : Bytes();
}

bool Image::claim(quint32 offset, std::size_t size)
{
    std::vector<bool>::reference taken = m_taken[offset / 8];
    if (taken || size > m_budget)
        return false;
    taken = true;
    m_budget -= size;
    return true;
}

Image::Bytes Image::take(quint32 offset, std::size_t minimum, const char* what)
{
    const Bytes cell = cellAt(offset);
    if (cell.empty() || cell.size() < minimum || !claim(offset, cell.size() + 4)) {
        note(offset, what);
        return {};
    }
    return cell;
}

int Image::addSecurity(const QByteArray& descriptor)
{
    if (descriptor.isEmpty())
        return -1;
    if (const auto known = m_securityIndex.constFind(descriptor); known != m_securityIndex.cend())
        return *known;
    const int index = int(m_securities.size());
    m_securities.push_back(descriptor);
    m_securityIndex.insert(descriptor, index);
    return index;
}

} // namespace quoril::regf
