#include "formats/regf_log.h"

#include "formats/regf_bytes.h"
#include "formats/regf_image.h"

#include <algorithm>
#include <bit>

namespace quoril::regf {

using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t Sector = 512;
constexpr quint32 LargestData = 0x7FFFF000;

/// The file types of a base block: a bitmap log has the first or, in a few versions, the second.
constexpr quint32 PrimaryFile = 0;
constexpr quint32 BitmapLog = 1;
constexpr quint32 OtherBitmapLog = 2;
constexpr quint32 EntryLog = 6;

/// Places of a log entry.
namespace entry {
constexpr std::size_t Size = 4;
constexpr std::size_t Sequence = 12;
constexpr std::size_t DataLength = 16;
constexpr std::size_t PageCount = 20;
constexpr std::size_t BodyHash = 24;
constexpr std::size_t HeadHash = 32;
constexpr std::size_t HashedHead = 32;
constexpr std::size_t Pages = 40;
} // namespace entry

template <typename Number> Number at(QByteArrayView bytes, std::size_t place)
{
    return qFromLittleEndian<Number>(bytes.data() + place);
}

bool isEntry(QByteArrayView bytes)
{
    return bytes.size() >= qsizetype(entry::Pages) && bytes.startsWith("HvLE")
        && at<quint64>(bytes, entry::HeadHash) == marvin32(bytes.first(entry::HashedHead));
}

/// The pages that an entry refers to; nothing where one lies outside of the entry or of the hive.
std::optional<std::vector<LogPage>> pagesOf(QByteArrayView bytes, quint32 dataLength)
{
    constexpr std::size_t Reference = 8;
    const std::size_t count = at<quint32>(bytes, entry::PageCount);
    const std::size_t room = std::size_t(bytes.size()) - entry::Pages;
    if (count > room / Reference)
        return std::nullopt;
    std::vector<LogPage> pages;
    pages.reserve(count);
    std::size_t used = count * Reference;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t reference = entry::Pages + i * Reference;
        const auto offset = at<quint32>(bytes, reference);
        const auto size = at<quint32>(bytes, reference + 4);
        if (size > room - used || offset > dataLength || size > dataLength - offset)
            return std::nullopt;
        pages.push_back({offset, bytes.sliced(qsizetype(entry::Pages + used), size)});
        used += size;
    }
    return pages;
}

} // namespace

quint64 marvin32(QByteArrayView bytes)
{
    quint32 low = 0x7A4E55C5;
    quint32 high = 0x82EF4D88;
    const auto mix = [&low, &high](quint32 word) {
        low += word;
        high ^= low;
        low = std::rotl(low, 20) + high;
        high = std::rotl(high, 9) ^ low;
        low = std::rotl(low, 27) + high;
        high = std::rotl(high, 19);
    };
    qsizetype place = 0;
    for (; bytes.size() - place >= 4; place += 4)
        mix(qFromLittleEndian<quint32>(bytes.data() + place));
    quint32 last = 0x80;
    for (qsizetype i = bytes.size() - 1; i >= place; --i)
        last = last << 8 | uchar(bytes[i]);
    mix(last);
    mix(0);
    return quint64(high) << 32 | low;
}

Log::Log(QByteArrayView bytes) : m_bytes(bytes)
{
    if (isEmpty()) {
        m_problem = u"is empty"_s;
        return;
    }
    if (m_bytes.size() < qsizetype(Sector) || !m_bytes.startsWith("regf")) {
        m_problem = u"is not a log"_s;
        return;
    }
    const QByteArray head = QByteArray::fromRawData(m_bytes.data(), Sector);
    if (baseChecksum(head) != at<quint32>(m_bytes, base::Checksum)) {
        m_problem = u"has a base block with a bad checksum"_s;
        return;
    }
    findHighest();
    const auto type = at<quint32>(m_bytes, base::FileType);
    if (sequence() != at<quint32>(m_bytes, base::SecondarySequence))
        m_problem = u"was not written to its end"_s;
    else if (type == EntryLog)
        m_form = Form::Entries;
    else if (type == BitmapLog || type == OtherBitmapLog)
        m_form = Form::Bitmap;
    else
        m_problem = u"is of an unknown kind"_s;
}

quint32 Log::sequence() const
{
    return at<quint32>(m_bytes, base::PrimarySequence);
}

quint64 Log::lastWritten() const
{
    return at<quint64>(m_bytes, base::LastWritten);
}

quint32 Log::dataLength() const
{
    return at<quint32>(m_bytes, base::DataLength);
}

QByteArray Log::baseSector() const
{
    QByteArray sector = m_bytes.first(Sector).toByteArray();
    qToLittleEndian(PrimaryFile, sector.data() + base::FileType);
    qToLittleEndian(baseChecksum(sector), sector.data() + base::Checksum);
    return sector;
}

/// Whatever follows the last entry that can be applied is of an older use of the file, but who continues the
/// numbers has to be above it all the same.
void Log::findHighest()
{
    m_highest = std::max(sequence(), at<quint32>(m_bytes, base::SecondarySequence));
    std::size_t place = Sector;
    while (place < std::size_t(m_bytes.size()) && isEntry(m_bytes.sliced(qsizetype(place)))) {
        const auto size = at<quint32>(m_bytes, place + entry::Size);
        m_highest = std::max(m_highest, at<quint32>(m_bytes, place + entry::Sequence));
        if (size < entry::Pages || size % Sector != 0)
            return;
        place += size;
    }
}

std::vector<LogEntry> Log::entries(QString& end) const
{
    std::vector<LogEntry> found;
    std::size_t place = Sector;
    while (m_form == Form::Entries) {
        auto next = entryAt(place, sequence() + quint32(found.size()), end);
        if (!next)
            return found;
        found.push_back(*std::move(next));
        place += at<quint32>(m_bytes, place + entry::Size);
    }
    if (m_form == Form::Bitmap) {
        if (auto all = bitmap(end))
            found.push_back(*std::move(all));
    }
    return found;
}

bool Log::hasFirstEntry() const
{
    if (m_form != Form::Entries)
        return m_form == Form::Bitmap;
    const QByteArrayView rest = m_bytes.sliced(Sector);
    return rest.size() >= qsizetype(entry::Pages) && rest.startsWith("HvLE")
        && at<quint32>(rest, entry::Sequence) == sequence();
}

std::optional<LogEntry> Log::entryAt(std::size_t place, quint32 wanted, QString& end) const
{
    const auto stop = [&end](const QString& why) {
        end = why;
        return std::nullopt;
    };
    const QByteArrayView rest = m_bytes.sliced(std::min(qsizetype(place), m_bytes.size()));
    if (rest.size() < qsizetype(entry::Pages) || !rest.startsWith("HvLE"))
        return stop(u"no further entry"_s);
    const auto number = at<quint32>(rest, entry::Sequence);
    if (wanted < sequence())
        return stop(u"the numbers are used up"_s);
    if (number != wanted)
        return stop(u"entry %1 in place of %2"_s.arg(hexNumber(number), hexNumber(wanted)));
    const auto size = at<quint32>(rest, entry::Size);
    if (size < entry::Pages || size % Sector != 0 || size > std::size_t(rest.size()))
        return stop(u"entry %1 is cut off"_s.arg(hexNumber(number)));
    const QByteArrayView bytes = rest.first(qsizetype(size));
    if (!isEntry(bytes) || at<quint64>(bytes, entry::BodyHash) != marvin32(bytes.sliced(entry::Pages)))
        return stop(u"entry %1 is damaged"_s.arg(hexNumber(number)));
    LogEntry found{number, at<quint32>(bytes, entry::DataLength), {}};
    if (found.dataLength == 0 || found.dataLength % bin::Unit != 0 || found.dataLength > LargestData)
        return stop(u"entry %1 states an impossible length"_s.arg(hexNumber(number)));
    auto pages = pagesOf(bytes, found.dataLength);
    if (!pages)
        return stop(u"entry %1 refers to pages outside"_s.arg(hexNumber(number)));
    found.pages = *std::move(pages);
    return found;
}

std::optional<LogEntry> Log::bitmap(QString& end) const
{
    constexpr std::size_t Bits = Sector + 4;
    LogEntry found{sequence(), dataLength(), {}};
    const std::size_t sectors = found.dataLength / Sector;
    const std::size_t bytes = (sectors + 7) / 8;
    const bool isWhole = m_bytes.size() >= qsizetype(Bits + bytes) && found.dataLength <= LargestData
        && m_bytes.sliced(Sector).startsWith("DIRT");
    if (!isWhole) {
        end = u"its bitmap is damaged"_s;
        return std::nullopt;
    }
    end = u"all of its sectors"_s;
    std::size_t place = (Bits + bytes + Sector - 1) / Sector * Sector;
    for (std::size_t sector = 0; sector < sectors; ++sector) {
        const auto group = uchar(m_bytes[qsizetype(Bits + sector / 8)]);
        if (group == 0) {
            sector |= 7;
            continue;
        }
        if ((group >> (sector % 8) & 1) == 0)
            continue;
        if (place + Sector > std::size_t(m_bytes.size())) {
            end = u"it ends before its sectors"_s;
            break;
        }
        found.pages.push_back({quint32(sector * Sector), m_bytes.sliced(qsizetype(place), Sector)});
        place += Sector;
    }
    return found;
}

} // namespace quoril::regf
