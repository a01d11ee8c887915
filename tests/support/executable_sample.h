#pragma once

#include "support/utf16.h"

#include <initializer_list>

namespace quoril::test {

template <typename Number> void setAt(QByteArray& bytes, qsizetype place, Number number)
{
    qToLittleEndian(number, bytes.data() + place);
}

inline void align(QByteArray& bytes)
{
    bytes.resize((bytes.size() + 3) & ~qsizetype(3), '\0');
}

/// A node of a version block, padded for the one after it. Its value is text if it has children of none.
inline QByteArray versionNode(
    QStringView name, const QByteArray& value, bool isText, const QByteArray& children = {})
{
    QByteArray bytes = QByteArray(6, '\0') + units(name) + QByteArray(2, '\0');
    align(bytes);
    bytes += value;
    if (!children.isEmpty())
        align(bytes);
    bytes += children;
    setAt(bytes, 0, quint16(bytes.size()));
    setAt(bytes, 2, quint16(isText ? value.size() / 2 : value.size()));
    setAt(bytes, 4, quint16(isText));
    align(bytes);
    return bytes;
}

/// A version block with the FileVersion, in the table of that name. Without a translation where asked for.
inline QByteArray versionBlock(
    QStringView fileVersion, QStringView table = u"040904B0", bool hasTranslation = true)
{
    const QByteArray zero(2, '\0');
    const QByteArray texts = versionNode(u"CompanyName", units(u"Sample") + zero, true)
        + versionNode(u"FileVersion", units(fileVersion) + zero, true);
    const QByteArray translation = versionNode(u"Translation",
        QByteArray::fromHex("0904b004"
                            "0704b004"),
        false);
    return versionNode(u"VS_VERSION_INFO", QByteArray(52, '\1'), false,
        versionNode(u"StringFileInfo", {}, true, versionNode(table, {}, true, texts))
            + (hasTranslation ? versionNode(u"VarFileInfo", {}, true, translation) : QByteArray()));
}

struct SampleResource
{
    quint32 language;
    QByteArray block;
};

/// An executable that has nothing but version resources, each in its language.
inline QByteArray executableOf(std::initializer_list<SampleResource> resources, bool is64 = true)
{
    constexpr quint32 address = 0x1000;
    constexpr quint32 resourceOffset = 512;
    const qsizetype optionalSize = is64 ? 240 : 224;
    QByteArray head(resourceOffset, '\0');
    head.replace(0, 2, "MZ");
    setAt<quint32>(head, 0x3C, 64);
    head.replace(64, 4, QByteArray("PE\0\0", 4));
    setAt<quint16>(head, 64 + 6, 1);
    setAt(head, 64 + 20, quint16(optionalSize));
    setAt<quint16>(head, 88, is64 ? 0x20B : 0x10B);
    const qsizetype directories = 88 + optionalSize - 128;
    setAt<quint32>(head, directories - 4, 16);
    setAt(head, directories + 16, address);

    // type 16, then number 1, then the languages
    const qsizetype count = qsizetype(resources.size());
    QByteArray data(64 + 24 * count, '\0');
    setAt<quint16>(data, 14, 1);
    setAt<quint32>(data, 16, 16);
    setAt<quint32>(data, 20, 0x80000000 + 24);
    setAt<quint16>(data, 24 + 14, 1);
    setAt<quint32>(data, 40, 1);
    setAt<quint32>(data, 44, 0x80000000 + 48);
    setAt(data, 48 + 14, quint16(count));
    qsizetype entry = 64;
    for (const SampleResource& resource : resources) {
        const qsizetype place = 64 + 8 * count + 2 * (entry - 64);
        setAt(data, entry, resource.language);
        setAt(data, entry + 4, quint32(place));
        setAt(data, place, quint32(address + data.size()));
        setAt(data, place + 4, quint32(resource.block.size()));
        data += resource.block;
        entry += 8;
    }
    setAt(head, directories + 20, quint32(data.size()));
    const qsizetype section = 88 + optionalSize;
    setAt(head, section + 8, quint32(data.size()));
    setAt(head, section + 12, address);
    setAt(head, section + 16, quint32(data.size()));
    setAt(head, section + 20, resourceOffset);
    return head + data;
}

} // namespace quoril::test
