#pragma once

#include "fake_calls.h"
#include "formats/name_case.h"
#include "platform/registry.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace quoril::test {

/// An open key of a FakeRegistry.
class FakeKey : public RegistryKey
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

        std::shared_ptr<Node> subkey(QStringView wanted) const
        {
            const auto found = std::ranges::find_if(
                subkeys, [&](const auto& key) { return foldedEquals(key->name, wanted); });
            return found == subkeys.end() ? nullptr : *found;
        }
    };

    FakeKey(FakeCalls& calls, QStringList& asked, std::shared_ptr<Node> node, quint32 rights)
        : m_calls(calls)
        , m_asked(asked)
        , m_node(std::move(node))
        , m_rights(rights)
        , m_mark(calls)
    {
    }

    Result<RegistryKeyHandle> open(QStringView name, quint32 access) const override
    {
        m_asked.append(name.toString() + QStringLiteral(" 0x") + QString::number(access, 16));
        return m_calls.attempt<Result<RegistryKeyHandle>>({}, [&]() -> Result<RegistryKeyHandle> {
            const auto found = m_node->subkey(name);
            if (!found || found->refusedRights & access)
                return Error{found ? error::AccessDenied : error::FileNotFound, {}};
            return RegistryKeyHandle(std::make_unique<FakeKey>(m_calls, m_asked, found, access));
        });
    }
    // Nobody above the platform makes a key or removes one.
    Result<RegistryKeyHandle> create(QStringView, quint32) override { return Error{error::AccessDenied, {}}; }
    Status removeTree(QStringView) override { return Error{error::AccessDenied, {}}; }

    Result<QString> subkeyName(quint32 index, qsizetype roomUnits) const override
    {
        return with<Result<QString>>(key_access::EnumerateSubKeys, [&]() -> Result<QString> {
            if (index >= m_node->subkeys.size())
                return Error{error::NoMoreItems, {}};
            const QString& name = m_node->subkeys[index]->name;
            return name.size() > roomUnits ? Result<QString>(Error{error::MoreData, {}}) : name;
        });
    }
    Result<QString> valueName(quint32 index) const override
    {
        return with<Result<QString>>(key_access::QueryValue, [&]() -> Result<QString> {
            if (index >= m_node->values.size())
                return Error{error::NoMoreItems, {}};
            return m_node->values[index].name;
        });
    }
    Result<RegistryValue> value(QStringView name, qsizetype limitBytes) const override
    {
        return with<Result<RegistryValue>>(key_access::QueryValue, [&]() -> Result<RegistryValue> {
            const auto found = find(name);
            if (found == m_node->values.end())
                return Error{error::FileNotFound, {}};
            if (found->value.data.size() > limitBytes)
                return Error{error::MoreData, {}};
            return found->value;
        });
    }
    Status setValue(QStringView name, const RegistryValue& value) override
    {
        return with<Status>(key_access::SetValue, [&] {
            if (const auto found = find(name); found != m_node->values.end())
                found->value = value;
            else
                m_node->values.push_back({name.toString(), value});
            return Status();
        });
    }
    Status removeValue(QStringView name) override
    {
        return with<Status>(key_access::SetValue, [&] {
            m_node->values.erase(find(name));
            return Status();
        });
    }

private:
    std::vector<Value>::iterator find(QStringView name) const
    {
        return std::ranges::find_if(
            m_node->values, [&](const auto& value) { return foldedEquals(value.name, name); });
    }
    template <typename Given, typename Make> Given with(quint32 right, const Make& make) const
    {
        return m_calls.attempt<Given>({}, [&]() -> Given {
            if (!(m_rights & right))
                return Error{error::AccessDenied, {}};
            return make();
        });
    }

    FakeCalls& m_calls;
    QStringList& m_asked;
    std::shared_ptr<Node> m_node;
    quint32 m_rights;
    OpenMark m_mark;
};

/// A registry in memory. Every key and value keeps its place, so enumeration is in the order of making.
class FakeRegistry : public Registry
{
public:
    using Node = FakeKey::Node;

    explicit FakeRegistry(FakeCalls& calls) : m_calls(calls) { }

    /// Adds keys and values from lines like
    ///     [SYSTEM\CurrentControlSet\Services\A]
    ///     Group=TargetPlatformEmulator
    ///     DependOnService=multi:B|C
    ///     Start=dword:2
    void load(QStringView lines)
    {
        RegistryKeyHandle current;
        const auto put = [&](QStringView name, QStringView text) {
            if (text.startsWith(u"multi:"))
                return current->setMultiString(name, text.mid(6).toString().split(u'|', Qt::SkipEmptyParts));
            if (text.startsWith(u"dword:"))
                return current->setDWord(name, text.mid(6).toUInt());
            return current->setText(name, text);
        };
        for (QStringView line : lines.split(u'\n', Qt::SkipEmptyParts)) {
            line = line.trimmed();
            if (line.startsWith(u'['))
                current = key(line.mid(1, line.size() - 2));
            else if (const qsizetype sign = line.indexOf(u'='); sign >= 0 && current)
                (void)put(line.left(sign), line.mid(sign + 1));
        }
    }

    /// The key at the path below HKEY_LOCAL_MACHINE, made when there is none; as an open key with all rights.
    Node& node(QStringView path) { return *made(path); }
    RegistryKeyHandle key(QStringView path)
    {
        return std::make_unique<FakeKey>(m_calls, asked, made(path), key_access::AllAccess);
    }
    void refuse(QStringView path, quint32 rights) { node(path).refusedRights = rights; }

    /// "name 0xmask" of every key that was opened or asked for.
    QStringList asked;
    bool wow64 = false;

    Result<RegistryKeyHandle> localMachine() override
    {
        return m_calls.attempt<Result<RegistryKeyHandle>>({}, [this] {
            return RegistryKeyHandle(
                std::make_unique<FakeKey>(m_calls, asked, m_root, key_access::AllAccess));
        });
    }
    bool isWow64Process() const override { return wow64; }

private:
    std::shared_ptr<Node> made(QStringView path) const
    {
        std::shared_ptr<Node> current = m_root;
        for (const QStringView name : path.split(u'\\')) {
            if (!current->subkey(name))
                current->subkeys.push_back(std::make_shared<Node>(Node{name.toString(), 0, {}, {}}));
            current = current->subkey(name);
        }
        return current;
    }

    FakeCalls& m_calls;
    std::shared_ptr<Node> m_root = std::make_shared<Node>();
};

} // namespace quoril::test
