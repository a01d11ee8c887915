#pragma once

#include "formats/regf_key.h"
#include "formats/zeroed_bytes.h"

#include <QByteArray>
#include <QHash>
#include <QStringList>

#include <array>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

namespace quoril::regf {

/// Places of the base block, its numbers little-endian.
namespace base {
inline constexpr quint32 Size = 4096;
inline constexpr quint32 PrimarySequence = 4;
inline constexpr quint32 SecondarySequence = 8;
inline constexpr quint32 LastWritten = 12;
inline constexpr quint32 MajorVersion = 20;
inline constexpr quint32 MinorVersion = 24;
inline constexpr quint32 FileType = 28;
inline constexpr quint32 FileFormat = 32;
inline constexpr quint32 RootCell = 36;
inline constexpr quint32 DataLength = 40;
inline constexpr quint32 Clustering = 44;
inline constexpr quint32 Checksum = 508;
} // namespace base

/// From version 1.4 on, data longer than this is kept in segments of at most this length.
inline constexpr quint32 SegmentLength = 16344;
inline constexpr quint32 NoOffset = 0xFFFFFFFF;

/// The XOR of the base block's first 508 bytes, with the two values that are never stored replaced.
quint32 baseChecksum(const QByteArray& block);

/// The bytes of a hive as cells, and what all its keys share. Each cell may be taken once, and all cells
/// together may be no larger than the file: loops, shared lists and overlaps end there, so reading a hive
/// is linear in its size whatever its offsets say.
class Image
{
public:
    using Bytes = std::span<const uchar>;

    explicit Image(QByteArray bytes);
    explicit Image(const ZeroedBytes& bytes);

    /// The base block, for the writer to start from.
    QByteArray baseBlock() const { return m_bytes.left(base::Size); }
    quint32 baseNumber(quint32 place) const;
    quint64 lastWritten() const;

    /// The content of an allocated cell not taken before, at least `minimum` bytes long. Otherwise nothing,
    /// and the problem is noted with the words `what`.
    Bytes take(quint32 offset, std::size_t minimum, const char* what);

    void note(quint32 offset, const char* what);
    const QStringList& problems() const { return m_problems; }
    /// Of all problems; the list ends at some.
    quint64 problemCount() const { return m_problemCount; }

    /// What the key cell at an offset says; nothing if it is not one.
    std::optional<Key::Header> readKey(quint32 offset);
    /// The offsets of a key's subkeys.
    std::vector<quint32> readSubkeys(quint32 keyCell);
    /// The values of a key.
    std::vector<Value> readValues(quint32 keyCell);

    const std::vector<QByteArray>& securities() const { return m_securities; }
    /// The index of a descriptor, added if it is new; -1 for an empty one.
    int addSecurity(const QByteArray& descriptor);

private:
    Bytes cellAt(quint32 offset) const;
    bool claim(quint32 offset, std::size_t size);
    void readList(quint32 offset, bool nested, std::vector<quint32>& keys);
    std::optional<Value> readValue(quint32 offset);
    std::optional<QByteArray> readData(quint32 offset, quint32 size);
    std::optional<QByteArray> readSegments(Bytes header, quint32 offset, quint32 size);
    int readSecurity(quint32 offset);
    QString nameOf(Bytes bytes, bool latin);

    ZeroedBytes m_memory; ///< what m_bytes look at, unless they own their bytes
    QByteArray m_bytes;
    std::size_t m_budget; ///< bytes of cells that may still be taken
    std::vector<bool> m_taken; ///< by offset / 8
    QStringList m_problems;
    quint64 m_problemCount = 0;
    std::vector<QByteArray> m_securities;
    QHash<QByteArray, int> m_securityIndex;
    std::unordered_map<quint32, int> m_securityByOffset;
    /// Names that were read of late: "Value" or "0" stands below thousands of keys, and is kept once.
    std::array<QString, 256> m_frequentNames;
};

} // namespace quoril::regf
