#pragma once

#include "fake_calls.h"
#include "platform/registry.h"

#include <memory>
#include <vector>

namespace quoril::test {

/// A registry in memory. Every key and value keeps its place, so enumeration is in the order of making.
class FakeRegistry : public Registry
{
public:
    struct Value
    {
        QString name;
        RegistryValue value;
    };
    struct Node
    {
        QString name;
        quint32 refusedRights = 0; ///< opening with any of them ends with error 5
        std::vector<Value> values;
        std::vector<std::shared_ptr<Node>> subkeys;

        std::shared_ptr<Node> subkey(QStringView name) const;
    };

    explicit FakeRegistry(FakeCalls& calls);

    /// Adds keys and values from lines like
    ///     [SYSTEM\CurrentControlSet\Services\A]
    ///     Group=TargetPlatformEmulator
    ///     DependOnService=multi:B|C
    ///     Start=dword:2
    void load(QStringView lines);

    /// The key at the path below HKEY_LOCAL_MACHINE, made when there is none; as an open key with all rights.
    Node& node(QStringView path);
    RegistryKeyHandle key(QStringView path);
    void refuse(QStringView path, quint32 rights) { node(path).refusedRights = rights; }

    /// "name 0xmask" of every key that was opened or asked for.
    QStringList asked;
    bool wow64 = false;

    Result<RegistryKeyHandle> localMachine() override;
    bool isWow64Process() const override { return wow64; }

private:
    FakeCalls& m_calls;
    std::shared_ptr<Node> m_root = std::make_shared<Node>();
};

} // namespace quoril::test
