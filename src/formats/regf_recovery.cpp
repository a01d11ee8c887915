#include "formats/regf_recovery.h"

#include "formats/regf_bytes.h"
#include "formats/regf_image.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace quoril::regf {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype BaseSector = 512;

using Bytes = std::span<const uchar>;

Bytes bytesOf(QByteArrayView view)
{
    return {reinterpret_cast<const uchar*>(view.data()), std::size_t(view.size())};
}

bool isWholeBase(QByteArrayView head)
{
    return head.size() >= qsizetype(base::Size) && head.startsWith("regf")
        && baseChecksum(QByteArray::fromRawData(head.data(), BaseSector))
        == numberAt<quint32>(bytesOf(head), base::Checksum);
}

/// The size of the bin whose header stands in `bytes`; 0 if it is none of that place.
std::size_t binSize(Bytes bytes, std::size_t place)
{
    if (bytes.size() < bin::Header || std::memcmp(bytes.data(), "hbin", 4) != 0
        || numberAt<quint32>(bytes, bin::Offset) != place)
        return 0;
    const std::size_t size = numberAt<quint32>(bytes, bin::Size);
    return size < bin::Unit ? 0 : size;
}

} // namespace

bool Recovery::isNeeded(QByteArrayView head)
{
    const Bytes bytes = bytesOf(head);
    return !isWholeBase(head)
        || numberAt<quint32>(bytes, base::PrimarySequence)
        != numberAt<quint32>(bytes, base::SecondarySequence);
}

Recovery::Recovery(QByteArrayView head, std::span<const NamedLog> logs)
{
    if (isWholeBase(head)) {
        m_hasBase = true;
        m_base = head.first(BaseSector).toByteArray();
        m_highest = std::max(numberAt<quint32>(bytesOf(head), base::PrimarySequence),
            numberAt<quint32>(bytesOf(head), base::SecondarySequence));
        m_dataLength = numberAt<quint32>(bytesOf(head), base::DataLength);
    }
    m_uses.resize(logs.size());
    std::vector<Candidate> candidates;
    for (std::size_t i = 0; i < logs.size(); ++i) {
        Candidate candidate{Log(logs[i].bytes), &m_uses[i]};
        candidate.use->name = logs[i].name;
        m_highest = std::max(m_highest, candidate.log.highestSequence());
        if (candidate.log.form() == Log::Form::None) {
            candidate.use->why = candidate.log.problem();
            candidate.use->state = candidate.log.isEmpty() ? LogUse::State::Unused : LogUse::State::Damaged;
        } else {
            candidates.push_back(candidate);
        }
    }
    if (isNeeded(head))
        choose(candidates, head);
}

/// An entry log belongs to the hive unless it is older than what was last written whole; a bitmap log if it
/// is of the same write as the hive's base block, or as its first bin where there is no base block.
bool Recovery::isOwn(const Candidate& candidate, QByteArrayView head) const
{
    const Bytes bytes = bytesOf(head);
    if (candidate.log.form() == Log::Form::Entries)
        return !m_hasBase || candidate.log.sequence() >= numberAt<quint32>(bytes, base::SecondarySequence);
    const std::size_t place = m_hasBase ? base::LastWritten : base::Size + bin::Time;
    return bytes.size() >= place + sizeof(quint64)
        && candidate.log.lastWritten() == numberAt<quint64>(bytes, place);
}

void Recovery::choose(std::vector<Candidate>& candidates, QByteArrayView head)
{
    std::erase_if(candidates, [&](const Candidate& candidate) {
        const bool isOwn = this->isOwn(candidate, head);
        if (!isOwn)
            candidate.use->why
                = u"is of another time than the hive (%1)"_s.arg(hexNumber(candidate.log.sequence()));
        return !isOwn;
    });
    const auto hasEntries = [](const Candidate& one) { return one.log.form() == Log::Form::Entries; };
    const auto earlier = [](const Candidate& left, const Candidate& right) {
        return left.log.sequence() < right.log.sequence();
    };
    std::stable_sort(candidates.begin(), candidates.end(), earlier);
    const bool anyEntries = std::any_of(candidates.begin(), candidates.end(), hasEntries);
    const auto skip = [](const Candidate& candidate) { candidate.use->why = u"is not the next one"_s; };
    if (anyEntries)
        std::erase_if(candidates, [&](const Candidate& candidate) {
            if (!hasEntries(candidate))
                skip(candidate);
            return !hasEntries(candidate);
        });
    if (candidates.empty())
        return;
    const bool onlyLatest = !anyEntries || !m_hasBase;
    if (!m_hasBase) {
        m_base = candidates.back().log.baseSector();
        m_dataLength = candidates.back().log.dataLength();
    }
    if (onlyLatest) {
        std::for_each(candidates.begin(), candidates.end() - 1, skip);
        take(candidates.back());
        return;
    }
    // Each log goes on where the one before it ended.
    std::optional<quint32> next;
    for (const Candidate& candidate : candidates) {
        if (next && candidate.log.sequence() != *next)
            candidate.use->why = u"begins with entry %1 in place of %2"_s.arg(
                hexNumber(candidate.log.sequence()), hexNumber(*next));
        else if (take(candidate))
            next = candidate.use->last + 1;
        else if (candidate.log.hasFirstEntry())
            next = candidate.log.sequence(); // what others say comes after what is lost
    }
}

bool Recovery::take(const Candidate& candidate)
{
    LogUse& use = *candidate.use;
    std::vector<LogEntry> entries = candidate.log.entries(use.why);
    if (entries.empty()) {
        use.state = candidate.log.hasFirstEntry() ? LogUse::State::Damaged : LogUse::State::Unused;
        return false;
    }
    m_isRecovered = true;
    m_isBitmap = candidate.log.form() == Log::Form::Bitmap;
    use.state = LogUse::State::Applied;
    use.first = entries.front().sequence;
    use.last = entries.back().sequence;
    for (LogEntry& entry : entries) {
        use.pages += entry.pages.size();
        m_dataLength = entry.dataLength;
        m_entries.push_back(std::move(entry));
    }
    return true;
}

std::size_t Recovery::size() const
{
    if (m_base.isEmpty())
        return 0;
    std::size_t length = m_entries.empty() ? m_dataLength : 0;
    for (const LogEntry& entry : m_entries)
        length = std::max<std::size_t>(length, entry.dataLength);
    return base::Size + length;
}

void Recovery::apply(std::span<char> hive)
{
    if (m_base.isEmpty() || (m_hasBase && !isRecovered()) || hive.size() < size())
        return;
    if (m_isBitmap) {
        applyBitmap(hive);
    } else {
        for (const LogEntry& entry : m_entries) {
            for (const LogPage& page : entry.pages)
                std::memcpy(hive.data() + base::Size + page.offset, page.bytes.data(),
                    std::size_t(page.bytes.size()));
        }
        omitBadBins(hive);
    }
    // From now on the hive is clean by its numbers; the next write continues above all of them.
    qToLittleEndian(m_highest, m_base.data() + base::PrimarySequence);
    qToLittleEndian(m_highest, m_base.data() + base::SecondarySequence);
    qToLittleEndian(m_dataLength, m_base.data() + base::DataLength);
    qToLittleEndian(baseChecksum(m_base), m_base.data() + base::Checksum);
    std::memcpy(hive.data(), m_base.constData(), std::size_t(m_base.size()));
    m_entries.clear(); // the logs need not stay
}

/// The sectors are applied bin by bin; the first that is none, as the log would have it, ends the recovery.
void Recovery::applyBitmap(std::span<char> hive)
{
    const std::vector<LogPage>& pages = m_entries.front().pages;
    const auto from = [&pages](std::size_t place) {
        return std::lower_bound(pages.begin(), pages.end(), place,
            [](const LogPage& page, std::size_t wanted) { return page.offset < wanted; });
    };
    std::size_t place = 0;
    std::size_t applied = 0;
    LogUse& use = *std::find_if(
        m_uses.begin(), m_uses.end(), [](const LogUse& one) { return one.state == LogUse::State::Applied; });
    while (place < m_dataLength) {
        const auto first = from(place);
        const bool isLogged = first != pages.end() && first->offset == place;
        const Bytes header = isLogged
            ? bytesOf(first->bytes)
            : bytesOf(QByteArrayView(hive.data(), qsizetype(hive.size()))).subspan(base::Size + place);
        const std::size_t size = binSize(header, place);
        if (size == 0) {
            use.why = u"the bin at %1 is damaged"_s.arg(hexNumber(quint32(place)));
            break;
        }
        for (auto page = first; page != pages.end() && page->offset < place + size; ++page, ++applied)
            std::memcpy(
                hive.data() + base::Size + page->offset, page->bytes.data(), std::size_t(page->bytes.size()));
        place += size;
    }
    use.pages = applied;
}

/// What is no bin holds no cells.
void Recovery::omitBadBins(std::span<char> hive)
{
    const std::span<char> data = hive.subspan(base::Size, m_dataLength);
    std::size_t place = 0;
    while (place < data.size()) {
        const Bytes rest(reinterpret_cast<const uchar*>(data.data()) + place, data.size() - place);
        const std::size_t size = binSize(rest, place);
        if (size == 0) {
            // Where nothing was ever written, nothing is to be: it would take memory.
            static constexpr std::array<char, bin::Unit> zeros{};
            const std::span<char> unit = data.subspan(place, std::min(bin::Unit, data.size() - place));
            if (std::memcmp(unit.data(), zeros.data(), unit.size()) != 0) {
                std::memset(unit.data(), 0, unit.size());
                ++m_omittedBins;
            }
        }
        place += size == 0 ? bin::Unit : (size + bin::Unit - 1) / bin::Unit * bin::Unit;
    }
}

bool Recovery::isRecovered() const
{
    return m_isRecovered;
}

bool Recovery::losesChanges() const
{
    return !isRecovered() && std::any_of(m_uses.begin(), m_uses.end(), [](const LogUse& use) {
        return use.state == LogUse::State::Damaged;
    });
}

QString Recovery::summary() const
{
    QStringList applied;
    QStringList others;
    for (const LogUse& use : m_uses) {
        if (use.state == LogUse::State::Applied)
            applied += u"%1 pages from %2 (%3 to %4, then %5)"_s.arg(
                QString::number(use.pages), use.name, hexNumber(use.first), hexNumber(use.last), use.why);
        else if (!use.why.isEmpty())
            others += use.name + u' ' + use.why;
    }
    QString text = u"the hive was not shut down cleanly; "_s
        + (applied.isEmpty() ? u"its latest changes may be missing"_s
                             : u"recovered "_s + applied.join(u" and "_s));
    if (!m_hasBase && !applied.isEmpty())
        text += u", its base block too"_s;
    if (m_omittedBins > 0)
        text += u"; %1 damaged bins left out"_s.arg(m_omittedBins);
    return others.isEmpty() ? text : text + u"; "_s + others.join(u"; "_s);
}

} // namespace quoril::regf
