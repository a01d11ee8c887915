#pragma once

#include "formats/error.h"
#include "formats/name_case.h"

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <memory>
#include <unordered_map>
#include <vector>

namespace quoril::regf {

class Image;

/// The value types with a meaning of their own. A hive may hold any other number.
namespace type {
inline constexpr quint32 None = 0;
inline constexpr quint32 String = 1;
inline constexpr quint32 ExpandString = 2;
inline constexpr quint32 Binary = 3;
inline constexpr quint32 Dword = 4;
inline constexpr quint32 DwordBigEndian = 5;
inline constexpr quint32 Link = 6;
inline constexpr quint32 MultiString = 7;
inline constexpr quint32 Qword = 11;
} // namespace type

/// One value of a key. An empty name is the key's default value.
struct Value
{
    QString name;
    quint32 type = type::None;
    QByteArray data;
    /// The flags as stored; bit 0: the name is kept in Latin-1.
    quint16 flags = 0;

    friend bool operator==(const Value&, const Value&) = default;
};

/// A key of a hive. Children and values are read from the file's bytes when first touched, so even reading is
/// not safe from two threads. A Key lives until it is removed or its Hive ends; pointers to it stay good
/// until then. Names match without regard to case.
class Key
{
public:
    /// Greatest nesting; deeper keys of a file are damage, deeper additions an error.
    static constexpr int MaximumDepth = 512;
    /// Longest names that may be added, in code units.
    static constexpr qsizetype MaximumKeyName = 255;
    static constexpr qsizetype MaximumValueName = 16383;
    /// Longest data that may be set, in bytes.
    static constexpr qsizetype MaximumData = 0x3FFFFFFF;

    static constexpr quint16 VolatileFlag = 0x01;
    static constexpr quint16 RootFlag = 0x04;
    static constexpr quint16 NoDeleteFlag = 0x08;
    static constexpr quint16 LatinNameFlag = 0x20;

    /// What a key's own cell says, besides its lists.
    struct Header
    {
        QString name;
        QString className;
        quint64 timestamp = 0; ///< FILETIME of the last change
        quint16 flags = 0;
        quint16 userFlags = 0; ///< upper half of the field for the longest subkey name
        quint32 access = 0; ///< the field after the time, kept as stored
        int security = -1; ///< index in the image's descriptors, -1 for none
    };

    Key(Image& image, Header header, int depth, quint32 cell);
    ~Key();
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;

    const QString& name() const { return m_header.name; }
    const QString& className() const { return m_header.className; }
    void setClassName(const QString& name) { m_header.className = name; }
    /// FILETIME of the last change.
    quint64 timestamp() const { return m_header.timestamp; }
    quint16 flags() const { return m_header.flags; }
    const Header& header() const { return m_header; }

    /// The security descriptor, self-relative; empty when there is none.
    QByteArray security() const;
    void setSecurity(const QByteArray& descriptor);

    std::size_t childCount() const { return children().size(); }
    /// The child at a place of the stored order, which is the order of enumeration; null beyond the end.
    const Key* childAt(std::size_t index) const;
    Key* childAt(std::size_t index);
    /// The child of that name, or null.
    const Key* child(QStringView name) const { return lookUp(name); }
    Key* child(QStringView name) { return lookUp(name); }
    /// The key below this one at a path with backslashes (empty parts are skipped), or null.
    const Key* find(QStringView path) const;
    Key* find(QStringView path);

    /// The child of that name, made if need be at its place in the sorted order, with this key's security.
    /// Fails with InvalidParameter for an empty or too long name, one with a backslash, or beyond
    /// MaximumDepth.
    Result<Key*> addChild(QStringView name, quint64 filetime);
    /// As addChild, along a path with backslashes.
    Result<Key*> addPath(QStringView path, quint64 filetime);
    /// Removes the child with all below it; false when there is none.
    bool removeChild(QStringView name, quint64 filetime);

    /// All values in stored order. Good until the next change.
    const std::vector<Value>& values() const;
    /// The value of that name, or null. Good until the next change.
    const Value* value(QStringView name) const;
    /// Changes or appends a value; the stored spelling of an existing name stays.
    /// Fails with InvalidParameter for a name longer than MaximumValueName or data longer than
    /// MaximumData.
    Status setValue(QStringView name, quint32 type, const QByteArray& data, quint64 filetime);
    /// False when there is no such value.
    bool removeValue(QStringView name, quint64 filetime);

    /// Whether all of the key's own subkeys and values could be read; reads them.
    bool isWhole() const;

private:
    using Children = std::vector<std::unique_ptr<Key>>;
    template <typename T> using NameMap = std::unordered_map<QStringView, T, FoldedHash, FoldedEqual>;

    Children& children() const;
    std::vector<Value>& loadedValues() const;
    Key* lookUp(QStringView name) const;
    std::ptrdiff_t valueIndex(QStringView name) const;

    static constexpr quint32 NoCell = 0xFFFFFFFF;

    Image* m_image;
    Header m_header;
    int m_depth;
    quint32 m_cell; ///< where the lists are read from, NoCell for a key made in memory
    mutable bool m_childrenLoaded = false;
    mutable bool m_valuesLoaded = false;
    mutable bool m_isWhole = true;
    mutable Children m_children;
    mutable std::vector<Value> m_values;
    /// Made on the first look-up among many, which few keys have; views of names that live in m_children and
    /// m_values.
    mutable std::unique_ptr<NameMap<Key*>> m_childIndex;
    mutable std::unique_ptr<NameMap<std::size_t>> m_valueIndex;
};

} // namespace quoril::regf
