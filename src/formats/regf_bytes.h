#pragma once

#include <QString>
#include <QtEndian>

#include <span>

namespace quoril::regf {

/// Places in the content of a key cell (nk); sizes in bytes, offsets from the end of the base block.
namespace nk {
inline constexpr std::size_t Flags = 2;
inline constexpr std::size_t Timestamp = 4;
inline constexpr std::size_t Access = 12;
inline constexpr std::size_t Parent = 16;
inline constexpr std::size_t SubkeyCount = 20;
inline constexpr std::size_t SubkeyList = 28;
inline constexpr std::size_t VolatileList = 32;
inline constexpr std::size_t ValueCount = 36;
inline constexpr std::size_t ValueList = 40;
inline constexpr std::size_t Security = 44;
inline constexpr std::size_t Class = 48;
inline constexpr std::size_t LongestSubkey = 52;
inline constexpr std::size_t UserFlags = 54;
inline constexpr std::size_t LongestClass = 56;
inline constexpr std::size_t LongestValueName = 60;
inline constexpr std::size_t LongestData = 64;
inline constexpr std::size_t NameSize = 72;
inline constexpr std::size_t ClassSize = 74;
inline constexpr std::size_t Name = 76;
} // namespace nk

/// Places in the content of a value cell (vk).
namespace vk {
inline constexpr std::size_t NameSize = 2;
inline constexpr std::size_t DataSize = 4;
inline constexpr std::size_t Data = 8;
inline constexpr std::size_t Type = 12;
inline constexpr std::size_t Flags = 16;
inline constexpr std::size_t Name = 20;
inline constexpr quint16 LatinNameFlag = 1;
inline constexpr quint32 InlineFlag = 0x80000000;
inline constexpr quint32 InlineLimit = 4;
} // namespace vk

/// Places in the content of a security cell (sk).
namespace sk {
inline constexpr std::size_t Next = 4;
inline constexpr std::size_t Previous = 8;
inline constexpr std::size_t References = 12;
inline constexpr std::size_t Size = 16;
inline constexpr std::size_t Descriptor = 20;
} // namespace sk

/// Places in the header of a bin, and what its size is a multiple of.
namespace bin {
inline constexpr std::size_t Header = 32;
inline constexpr std::size_t Unit = 4096;
inline constexpr std::size_t Offset = 4;
inline constexpr std::size_t Size = 8;
inline constexpr std::size_t Time = 20;
} // namespace bin

inline QString hexNumber(quint32 number)
{
    return QStringLiteral("0x") + QString::number(number, 16);
}

template <typename Number> Number numberAt(std::span<const uchar> bytes, std::size_t place)
{
    return qFromLittleEndian<Number>(bytes.data() + place);
}

inline bool hasSignature(std::span<const uchar> cell, char first, char second)
{
    return cell.size() >= 2 && cell[0] == uchar(first) && cell[1] == uchar(second);
}

/// Little-endian code units; a last odd byte is left out.
inline QString unitsOf(std::span<const uchar> bytes)
{
    QString text(qsizetype(bytes.size() / 2), Qt::Uninitialized);
    qFromLittleEndian<char16_t>(bytes.data(), text.size(), text.data());
    return text;
}

} // namespace quoril::regf
