#pragma once

#include "platform/registry.h"
#include "platform/tree/hive_store.h"

#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace quoril {

/// A hive as its keys see it.
struct MountedHive
{
    QString name;
    std::shared_ptr<HiveStore> store;
};

/// An open key of a hive.
class HiveKey : public RegistryKey
{
public:
    /// The path lies below the hive's root, links resolved; an empty one is the root.
    HiveKey(MountedHive hive, QString path, quint32 access);

    Result<RegistryKeyHandle> open(QStringView name, quint32 access) const override;
    Result<RegistryKeyHandle> create(QStringView name, quint32 access) override;
    Status removeTree(QStringView name) override;
    Result<QString> subkeyName(quint32 index, qsizetype roomUnits) const override;
    Result<QString> valueName(quint32 index) const override;
    Result<RegistryValue> value(QStringView name, qsizetype limitBytes) const override;
    Status setValue(QStringView name, const RegistryValue& value) override;
    Status removeValue(QStringView name) override;

    /// The key and all below it in the registry editor's form, under that path.
    Result<QByteArray> exportText(const QString& path) const;

private:
    Result<regf::Key*> key() const;
    Result<regf::Key*> keyFor(quint32 right) const;
    RegistryKeyHandle handleOf(regf::Key& child, quint32 access) const;
    bool isLink(QStringView name) const;
    QString linkTarget(const regf::Key& root) const;
    std::optional<std::size_t> linkIndex(const regf::Key& key) const;
    Status apply(quint32 right, const std::function<Status(regf::Key&, quint64)>& change);

    MountedHive m_hive;
    QString m_path;
    quint32 m_access;
    mutable quint64 m_generation = 0;
    mutable regf::Key* m_key = nullptr; // of m_generation
};

} // namespace quoril
