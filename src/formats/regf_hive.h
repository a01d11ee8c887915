#pragma once

#include "formats/error.h"
#include "formats/regf_key.h"
#include "formats/zeroed_bytes.h"

#include <QByteArray>
#include <QStringList>

#include <memory>

namespace quoril::regf {

/// A registry hive file in memory. Opening reads the base block and the root's own cell only; the rest is
/// read from the bytes when touched. Damage below the root gives fewer keys and values and is listed in
/// problems(); such a hive can be read but is never written again (see serialize).
class Hive
{
public:
    /// Fails with RegistryCorrupt when the base block (magic, version, checksum) or the root key is unusable.
    static Result<Hive> parse(const QByteArray& bytes);
    /// The same for bytes in memory that the hive keeps.
    static Result<Hive> parse(const ZeroedBytes& bytes);
    /// An empty hive of version 1.5 whose root is open to administrators and the system, readable for users.
    static Hive create(const QString& rootName, quint64 filetime = 0);

    Hive(Hive&&) noexcept;
    Hive& operator=(Hive&&) noexcept;
    ~Hive();

    Key& root() { return *m_root; }
    const Key& root() const { return *m_root; }

    /// The two sequence numbers differed: there may be changes in the log files beside the hive.
    bool notShutDownCleanly() const;
    /// FILETIME of the last write as the base block has it.
    quint64 lastWritten() const;

    /// Damage met so far. What has not been touched has not been looked at.
    bool damaged() const;
    const QStringList& problems() const;
    /// Reads all of the hive, and fails with RegistryCorrupt when any of it is damaged: ask before a change.
    Status rewritable() const;

    /// The whole hive as a new file image with equal sequence numbers and `filetime` as its time of writing.
    /// Fails with RegistryCorrupt where rewritable() does: a write would lose what could not be read.
    Result<QByteArray> serialize(quint64 filetime) const;

private:
    Hive(std::unique_ptr<Image> image, std::unique_ptr<Key> root);
    template <typename Bytes> static Result<Hive> parseImage(const Bytes& bytes, QByteArrayView view);

    std::unique_ptr<Image> m_image; // before m_root, which refers to it
    std::unique_ptr<Key> m_root;
};

} // namespace quoril::regf
