#pragma once

#include "platform/registry.h"

#include <QString>
#include <QStringView>

#include <memory>

namespace quoril {

class HiveFile;
class HiveStore;
class TreePaths;

/// A series of changes to one hive that becomes one new file of it with commit(), or nothing. The changes are
/// made through keys of the same registry and are seen there at once. Other threads and programs that want
/// to change the hive wait. It ends in the thread where it began.
class RegistryTransaction
{
public:
    /// For TreeRegistry::beginTransaction(): takes over the hive's mutex, which is held.
    explicit RegistryTransaction(std::shared_ptr<HiveFile> hive);
    ~RegistryTransaction();
    RegistryTransaction(const RegistryTransaction&) = delete;
    RegistryTransaction& operator=(const RegistryTransaction&) = delete;

    Status commit();

private:
    std::shared_ptr<HiveFile> m_hive;
    bool m_isOpen = true;
};

/// HKEY_LOCAL_MACHINE of a tree: the hives SYSTEM and SOFTWARE from their files, and HARDWARE, volatile as it
/// is on Windows, with what the host knows of its processors.
///
/// CurrentControlSet is a link that no file holds: it leads to the control set that Select\Current names, and
/// is listed below SYSTEM at its place as the live registry lists it. Whether a file was replaced is looked
/// at when a hive is opened, and when a key below its root is; keys that are open then stay so, and give 1018
/// when they are no longer there. Every right is given to who asks for it: who may read the tree's files may
/// read its registry. A right that a key was not opened with gives 5.
class TreeRegistry : public Registry
{
public:
    /// The paths are not owned and live as long as this object.
    explicit TreeRegistry(const TreePaths& paths);
    ~TreeRegistry() override;

    Result<RegistryKeyHandle> localMachine() override;
    bool isWow64Process() const override { return false; }

    /// The key SYSTEM, without a look at its file, which is looked at when a key below it is opened.
    RegistryKeyHandle system();

    /// For many changes to SYSTEM or SOFTWARE in one write. Errors as for a single change.
    Result<std::unique_ptr<RegistryTransaction>> beginTransaction(QStringView hiveName);

private:
    struct Hives;
    class RootKey;

    std::shared_ptr<Hives> m_hives;
};

} // namespace quoril
