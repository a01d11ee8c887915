#pragma once

#include "platform/host/file_lock.h"
#include "platform/host/host_file.h"
#include "platform/tree/hive_store.h"

#include <QByteArray>
#include <QString>

#include <memory>

namespace quoril {

class TreePaths;

/// A hive in a file of the tree that several programs may use at once. It is read once and kept, and read
/// again when another program has put a new file in its place. A change takes the lock beside the file, is
/// made to the newest state, and becomes a whole new file, so that no program loses another's change and no
/// one ever sees half of one.
class HiveFile : public HiveStore
{
public:
    /// The paths are not owned. The hive is C:\Windows\System32\config\name.
    HiveFile(const TreePaths& paths, const QString& name);
    ~HiveFile() override;

    /// 2 no such file, 5, 1015 damage. Why a hive can't be opened is reported once on standard error.
    Status refresh() override;

    /// 5 and 19 where the tree can't be written, 32 when another program holds the lock for too long, 112,
    /// and 1015 for a hive of which a part can't be read: it would be lost in the new file.
    Status change(const Change& apply) override;
    void reportDamage() override;

    /// Begins a series of changes that become one new file with commit(). The caller holds the mutex until
    /// commit() or rollBack(). Errors as change().
    Status begin();
    Status commit();
    void rollBack();

private:
    /// Distinguishes one state of the file from another.
    struct Stamp
    {
        HostFileStamp file;
        QByteArray baseBlock; // a file's number and the time may be those of the file before

        friend bool operator==(const Stamp&, const Stamp&) = default;
    };

    Status readIfReplaced();
    Status load(QFile& file, Stamp stamp);
    Status refuseDamage();
    Status write();
    void drop();
    void reportOnce(const Error& failure);
    static Result<Stamp> stampNow(QFile& file);

    const TreePaths& m_paths;
    QString m_machinePath;
    QString m_hostPath; // where the hive was read last
    bool m_isSettled = false; // its stamp alone says whether it is still the same
    std::optional<HostPlace>
        m_place; // of the hive that is changed, while a change or a series of them goes on
    Stamp m_stamp;
    QString m_told;
    bool m_damageReported = false;
    bool m_losesChanges = false; // of a log that could not be applied
    std::unique_ptr<FileLock> m_lock; // while a change or a series of them goes on
    bool m_inTransaction = false;
    bool m_isDirty = false;
};

} // namespace quoril
