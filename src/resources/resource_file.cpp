#include "resources/resource_file.h"

#include <QtEndian>

#include <optional>

namespace quoril {

namespace {

// The layout of a file that `rcc --binary` writes; all numbers are big-endian.
constexpr quint32 Magic = 0x71726573; // "qres"
constexpr quint32 OldestVersion = 2;
constexpr quint32 NewestVersion = 3;
constexpr qsizetype HeaderSize = 20;
constexpr qsizetype NodeSize = 22;
constexpr quint16 CompressedFlag = 1;
constexpr quint16 DirectoryFlag = 2;
constexpr quint16 ZstdFlag = 4;
constexpr int DeepestDirectory = 16;
constexpr quint32 LargestText = 64 * 1024 * 1024;

/// The tree walk of one file. The number of nodes is bounded by the file's size, so that a tree that leads
/// back into itself ends as a fault.
class TreeCheck
{
public:
    explicit TreeCheck(QByteArrayView bytes) : m_bytes(bytes), m_nodesLeft(bytes.size() / NodeSize) { }

    bool run()
    {
        if (number<quint32>(0) != Magic || m_bytes.size() < HeaderSize)
            return false;
        const quint32 version = *number<quint32>(4);
        if (version < OldestVersion || version > NewestVersion)
            return false;
        m_tree = *number<quint32>(8);
        m_data = *number<quint32>(12);
        m_names = *number<quint32>(16);
        return checkNode(0, 0);
    }

private:
    template <typename T> std::optional<T> number(qint64 offset) const
    {
        if (offset < 0 || offset > m_bytes.size() - static_cast<qint64>(sizeof(T)))
            return std::nullopt;
        return qFromBigEndian<T>(m_bytes.data() + offset);
    }

    bool within(qint64 offset, qint64 size) const { return offset + size <= m_bytes.size(); }

    bool checkNode(qint64 index, int depth)
    {
        const qint64 node = m_tree + index * NodeSize;
        if (--m_nodesLeft < 0 || depth > DeepestDirectory || !within(node, NodeSize))
            return false;
        const quint16 flags = *number<quint16>(node + 4);
        // A look-up takes the root for a directory without asking.
        if (index == 0 && !(flags & DirectoryFlag))
            return false;
        const qint64 name = m_names + *number<quint32>(node);
        // The root has no name of its own.
        if (index != 0 && !within(name, 6 + 2 * qint64(number<quint16>(name).value_or(0))))
            return false;
        const quint32 place = *number<quint32>(node + 10);
        return flags & DirectoryFlag ? checkChildren(*number<quint32>(node + 6), place, depth + 1)
                                     : checkData(m_data + place, flags);
    }

    bool checkChildren(quint32 count, quint32 first, int depth)
    {
        if (count > m_nodesLeft)
            return false;
        for (quint32 i = 0; i < count; ++i) {
            if (!checkNode(qint64(first) + i, depth))
                return false;
        }
        return true;
    }

    bool checkData(qint64 data, quint16 flags) const
    {
        const std::optional<quint32> size = number<quint32>(data);
        if (!size || !within(data + 4, *size))
            return false;
        // Compressed data begins with its full size, which is allocated before the first byte is read. In a
        // zstd frame the size has many forms; such files are left out.
        if (flags & ZstdFlag)
            return false;
        return !(flags & CompressedFlag) || number<quint32>(data + 4).value_or(LargestText) < LargestText;
    }

    QByteArrayView m_bytes;
    qint64 m_nodesLeft;
    qint64 m_tree = 0;
    qint64 m_data = 0;
    qint64 m_names = 0;
};

} // namespace

bool isSoundResourceFile(QByteArrayView bytes)
{
    return TreeCheck(bytes).run();
}

} // namespace quoril
