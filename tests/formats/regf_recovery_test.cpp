// Stale hives and the logs beside them, made page by page.

#include "formats/regf_hive.h"
#include "formats/regf_image.h"
#include "formats/regf_recovery.h"

#include <QtEndian>

#include <functional>

namespace quoril::test {

namespace {

constexpr quint32 FirstEntry = 10; // what a stale hive has as its secondary sequence number
constexpr quint64 Time = 77;

template <typename Number> void put(QByteArray& bytes, qsizetype place, Number number)
{
    qToLittleEndian(number, bytes.data() + place);
}

void seal(QByteArray& bytes)
{
    put(bytes, regf::base::Checksum, regf::baseChecksum(bytes));
}

/// A hive of a generation: each has a greater number in it than the one before, and is longer.
QByteArray hiveOf(quint32 generation)
{
    regf::Hive hive = regf::Hive::create(u"R"_s, Time);
    QByteArray number(4, '\0');
    put(number, 0, generation);
    EXPECT_TRUE(hive.root().setValue(u"generation", regf::type::Dword, number, Time));
    EXPECT_TRUE(hive.root().setValue(u"data", 3, QByteArray(6000 * qsizetype(generation), 'x'), Time));
    QByteArray bytes = *hive.serialize(Time);
    put(bytes, regf::base::PrimarySequence, FirstEntry + 1);
    put(bytes, regf::base::SecondarySequence, FirstEntry);
    seal(bytes);
    return bytes;
}

/// The first sector of a log of that type beside the hive.
QByteArray logHead(const QByteArray& hive, quint32 type, quint32 sequence)
{
    QByteArray head = hive.first(512);
    put(head, 28, type);
    put(head, regf::base::PrimarySequence, sequence);
    put(head, regf::base::SecondarySequence, sequence);
    seal(head);
    return head;
}

void hash(QByteArray& entry)
{
    put(entry, 24, regf::marvin32(QByteArrayView(entry).sliced(40)));
    put(entry, 32, regf::marvin32(QByteArrayView(entry).first(32)));
}

/// The entry that makes the generation of its number out of the one before.
QByteArray entryOf(quint32 sequence)
{
    const quint32 generation = sequence < FirstEntry ? 0 : sequence - FirstEntry + 1;
    const QByteArray data = hiveOf(generation).sliced(4096);
    QByteArray entry(40 + 8 + data.size(), '\0');
    entry.replace(0, 4, "HvLE");
    put(entry, 12, sequence);
    put(entry, 16, quint32(data.size()));
    put(entry, 20, quint32(1));
    put(entry, 44, quint32(data.size()));
    entry.replace(48, data.size(), data);
    entry.append((512 - entry.size() % 512) % 512, '\0');
    put(entry, 4, quint32(entry.size()));
    hash(entry);
    return entry;
}

/// A log of the newer form with the entries from a number on.
QByteArray logOf(quint32 sequence, quint32 count)
{
    QByteArray log = logHead(hiveOf(0), 6, sequence);
    for (quint32 i = 0; i < count; ++i)
        log += entryOf(sequence + i);
    return log;
}

/// A log of the older form with all sectors of a generation.
QByteArray bitmapOf(quint32 generation)
{
    const QByteArray hive = hiveOf(generation);
    QByteArray log = logHead(hive, 1, FirstEntry + generation) + "DIRT";
    log.append((hive.size() - 4096) / 512 / 8, '\xFF');
    log.append((512 - log.size() % 512) % 512, '\0');
    return log + hive.sliced(4096);
}

QByteArray changed(QByteArray bytes, qsizetype place, quint32 number, bool rehash = false)
{
    put(bytes, place, number);
    if (rehash) {
        QByteArray entry = bytes.sliced(512, qFromLittleEndian<quint32>(bytes.constData() + 516));
        hash(entry);
        bytes.replace(512, entry.size(), entry);
    }
    return bytes;
}

QByteArray withBadBase(QByteArray hive)
{
    return changed(std::move(hive), regf::base::Checksum, 1);
}

struct Stale
{
    const char* what;
    int generation; ///< that is read at last; -1 for a hive that can't be
    std::vector<QByteArray> logs;
    QByteArray hive = hiveOf(0);
    bool losesChanges = false;
};

} // namespace

TEST(RegfRecovery, AppliesWhatBelongsToTheHiveAndStopsAtTheFirstFault)
{
    const QByteArray cleanHive = [] {
        QByteArray hive = hiveOf(0);
        put(hive, regf::base::PrimarySequence, FirstEntry);
        seal(hive);
        return hive;
    }();
    const qsizetype second = logOf(10, 1).size();
    QByteArray badBin = bitmapOf(1);
    badBin.replace(badBin.indexOf("hbin"), 4, "nobi");
    const Stale cases[] = {
        {"no log", 0, {}},
        {"one log", 2, {logOf(10, 2)}},
        {"a clean hive", 0, {logOf(10, 2)}, cleanHive},
        {"two logs", 3, {logOf(10, 2), logOf(12, 1)}},
        {"the later log first", 3, {logOf(12, 1), logOf(10, 2)}},
        {"numbers that go on later", 2, {logOf(11, 1)}},
        {"an older log beside", 1, {logOf(10, 1), logOf(9, 1)}},
        {"only an older log", 0, {logOf(9, 1)}},
        {"a gap between two logs", 1, {logOf(10, 1), logOf(12, 1)}},
        {"a log that was only begun", 2, {logOf(10, 0), logOf(11, 1)}},
        {"remains of an older use", 2, {logOf(10, 0) + entryOf(8), logOf(11, 1)}},
        {"remains after the end", 1, {logOf(10, 1) + entryOf(9)}},
        {"an empty log", 1, {QByteArray(), logOf(10, 1)}},
        {"a byte of the second entry", 1, {changed(logOf(10, 2), second + 600, 0x12345678)}},
        {"a byte of the first entry", 0, {changed(logOf(10, 2), 600, 0x12345678), logOf(12, 1)}, hiveOf(0),
            true},
        {"a cut entry", 1, {logOf(10, 2).chopped(512)}},
        {"a size of nothing", 0, {changed(logOf(10, 1), 516, 0)}, hiveOf(0), true},
        {"a head that is no head", 0, {changed(logOf(10, 1), 100, 1)}, hiveOf(0), true},
        {"a log that was being written", 0, {changed(logOf(10, 1), 8, 9)}, hiveOf(0), true},
        {"a huge count", 0, {changed(logOf(10, 1), 532, 0xFFFFFFFF, true)}, hiveOf(0), true},
        {"a page outside", 0, {changed(logOf(10, 1), 552, 0x7FFFF000, true)}, hiveOf(0), true},
        {"a page larger than its entry", 0, {changed(logOf(10, 1), 556, 0xFFFFFFFF, true)}, hiveOf(0), true},
        {"an odd length", 0, {changed(logOf(10, 1), 528, 0x7FFFFFFF, true)}, hiveOf(0), true},
        {"a bad base block", 2, {logOf(10, 2)}, withBadBase(hiveOf(0))},
        {"the later of two for a bad base block", 2, {logOf(11, 1), logOf(9, 1)}, withBadBase(hiveOf(0))},
        {"nothing for a bad base block", -1, {}, withBadBase(hiveOf(0))},
        {"a bitmap", 1, {bitmapOf(1)}},
        {"the later of two bitmaps", 2, {bitmapOf(2), bitmapOf(1)}},
        {"a bitmap for a bad base block", 1, {bitmapOf(1)}, withBadBase(hiveOf(0))},
        {"a bitmap of another time", 0, {bitmapOf(1)},
            [] {
                QByteArray hive = hiveOf(0);
                put(hive, regf::base::LastWritten, Time + 1);
                seal(hive);
                return hive;
            }()},
        {"a bitmap of what is no bin", 0, {badBin}},
        {"a bitmap that is cut off", 0, {bitmapOf(1).first(514)}, hiveOf(0), true},
    };
    for (const Stale& stale : cases) {
        SCOPED_TRACE(stale.what);
        std::vector<regf::Recovery::NamedLog> logs;
        for (const QByteArray& log : stale.logs)
            logs.push_back({u"LOG"_s, log});
        regf::Recovery recovery(stale.hive, logs);
        QByteArray image = stale.hive;
        image.resize(std::max(image.size(), qsizetype(recovery.size())), '\0');
        recovery.apply({image.data(), std::size_t(image.size())});
        const Result<regf::Hive> hive = regf::Hive::parse(image);
        ASSERT_EQ(hive.ok(), stale.generation >= 0);
        if (!hive)
            continue;
        const regf::Value* number = hive->root().value(u"generation");
        ASSERT_TRUE(number) << recovery.summary();
        EXPECT_EQ(qFromLittleEndian<qint32>(number->data.constData()), stale.generation)
            << recovery.summary();
        EXPECT_EQ(recovery.losesChanges(), stale.losesChanges);
        // What is written now stands above whatever the logs hold.
        const Result<QByteArray> written = hive->serialize(1);
        ASSERT_TRUE(written);
        const auto sequence = qFromLittleEndian<quint32>(written->constData() + 4);
        EXPECT_GE(sequence, FirstEntry + quint32(stale.generation));
        EXPECT_FALSE(regf::Recovery::isNeeded(*written));
    }
}

TEST(RegfRecovery, IsNotWrittenBelowANumberOfItsLog)
{
    const QByteArray log
        = changed(logHead(hiveOf(0), 6, 0xFFFFFFFF) + entryOf(FirstEntry), 512 + 12, 0xFFFFFFFF, true);
    const std::vector<regf::Recovery::NamedLog> logs = {{u"LOG"_s, log}};
    QByteArray image = hiveOf(0);
    regf::Recovery recovery(image, logs);
    image.resize(qsizetype(std::max<std::size_t>(std::size_t(image.size()), recovery.size())), '\0');
    recovery.apply({image.data(), std::size_t(image.size())});
    EXPECT_TRUE(recovery.isRecovered());
    EXPECT_EQ(regf::Hive::parse(image)->serialize(1).errorNumber(), error::RegistryCorrupt);
}

} // namespace quoril::test
