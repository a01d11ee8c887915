// A hive and two logs of any bytes: what is recovered stays inside, and what is written of it is above the
// logs.

#include "formats/regf_hive.h"
#include "formats/regf_image.h"
#include "formats/regf_recovery.h"

#include <QtEndian>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

using namespace quoril;

namespace {

constexpr qsizetype Sector = 512;
constexpr quint32 MostEntries = 64;
/// The sanitizer takes memory for all that a hive only claims to have.
constexpr std::size_t LargestHive = 1 << 24;

/// Takes two bytes of length and as many sectors.
QByteArray takePart(QByteArray& bytes)
{
    if (bytes.size() < 2)
        return {};
    const qsizetype size = std::min(qFromLittleEndian<quint16>(bytes.constData()) * Sector, bytes.size() - 2);
    const QByteArray part = bytes.sliced(2, size);
    bytes.remove(0, 2 + size);
    return part;
}

// Checksums and hashes are no obstacle to someone who means harm, so they must be none here.
void seal(QByteArray& base)
{
    if (base.size() >= Sector)
        qToLittleEndian(regf::baseChecksum(base), base.data() + regf::base::Checksum);
}

void sealLog(QByteArray& log)
{
    seal(log);
    qsizetype place = Sector;
    for (quint32 i = 0; i < MostEntries && log.size() - place >= Sector; ++i) {
        const qsizetype size = qFromLittleEndian<quint32>(log.constData() + place + 4);
        if (size < Sector || size > log.size() - place)
            return;
        char* const entry = log.data() + place;
        qToLittleEndian(regf::marvin32({entry + 40, size - 40}), entry + 24);
        qToLittleEndian(regf::marvin32({entry, 32}), entry + 32);
        place += size;
    }
}

std::size_t walk(const regf::Key& key)
{
    std::size_t total = key.values().size();
    for (std::size_t i = 0; i < key.childCount(); ++i)
        total += 1 + walk(*key.childAt(i));
    return total;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    QByteArray hive = takePart(bytes);
    QByteArray first = takePart(bytes);
    QByteArray second = takePart(bytes);
    if (!bytes.startsWith('b')) // else the hive's base block stays bad
        seal(hive);
    sealLog(first);
    sealLog(second);
    const regf::Recovery::NamedLog logs[] = {{QStringLiteral("1"), first}, {QStringLiteral("2"), second}};
    regf::Recovery recovery(hive, logs);
    if (recovery.size() > LargestHive)
        return 0;
    const ZeroedBytes image(std::max(recovery.size(), std::size_t(hive.size())));
    std::memcpy(image.data(), hive.constData(), std::min(image.size(), std::size_t(hive.size())));
    recovery.apply(image.span());
    const Result<regf::Hive> read = regf::Hive::parse(image);
    if (!read)
        return 0;
    (void)walk(read->root());
    const Result<QByteArray> written = read->serialize(1);
    if (!written)
        return 0;
    const auto sequence = qFromLittleEndian<quint32>(written->constData() + regf::base::PrimarySequence);
    for (const regf::LogUse& use : recovery.uses()) {
        if (use.state == regf::LogUse::State::Applied && use.last >= sequence)
            std::abort();
    }
    if (regf::Recovery::isNeeded(*written))
        std::abort();
    return 0;
}
