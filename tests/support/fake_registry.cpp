#include "fake_registry.h"

#include "formats/name_case.h"

#include <algorithm>

namespace quoril::test {

using namespace Qt::StringLiterals;
using Node = FakeRegistry::Node;

namespace {

class FakeKey : public RegistryKey
{
public:
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
        m_asked.append(name.toString() + u" 0x"_s + QString::number(access, 16));
        if (const auto failure = m_calls.note({}))
            return *failure;
        const auto found = m_node->subkey(name);
        if (!found)
            return Error{error::FileNotFound, {}};
        if (found->refusedRights & access)
            return Error{error::AccessDenied, {}};
        return RegistryKeyHandle(std::make_unique<FakeKey>(m_calls, m_asked, found, access));
    }

    Result<RegistryKeyHandle> create(QStringView name, quint32 access) override
    {
        if (const Status allowed = check(key_access::CreateSubKey); !allowed)
            return allowed.failure();
        if (!m_node->subkey(name))
            m_node->subkeys.push_back(std::make_shared<Node>(Node{name.toString(), 0, {}, {}}));
        return open(name, access);
    }

    Status removeTree(QStringView name) override
    {
        if (const Status allowed = check(key_access::Delete); !allowed)
            return allowed;
        return std::erase_if(m_node->subkeys, [&](const auto& key) { return foldedEquals(key->name, name); })
            ? Status()
            : Status(Error{error::FileNotFound, {}});
    }

    Result<QString> subkeyName(quint32 index, qsizetype roomUnits) const override
    {
        if (const Status allowed = check(key_access::EnumerateSubKeys); !allowed)
            return allowed.failure();
        if (index >= m_node->subkeys.size())
            return Error{error::NoMoreItems, {}};
        const QString& name = m_node->subkeys[index]->name;
        return name.size() > roomUnits ? Result<QString>(Error{error::MoreData, {}}) : name;
    }

    Result<QString> valueName(quint32 index) const override
    {
        if (const Status allowed = check(key_access::QueryValue); !allowed)
            return allowed.failure();
        if (index >= m_node->values.size())
            return Error{error::NoMoreItems, {}};
        return m_node->values[index].name;
    }

    Result<RegistryValue> value(QStringView name, qsizetype limitBytes) const override
    {
        if (const Status allowed = check(key_access::QueryValue); !allowed)
            return allowed.failure();
        const auto found = find(name);
        if (found == m_node->values.end())
            return Error{error::FileNotFound, {}};
        if (found->value.data.size() > limitBytes)
            return Error{error::MoreData, {}};
        return found->value;
    }

    Status setValue(QStringView name, const RegistryValue& value) override
    {
        if (const Status allowed = check(key_access::SetValue); !allowed)
            return allowed;
        if (const auto found = find(name); found != m_node->values.end())
            found->value = value;
        else
            m_node->values.push_back({name.toString(), value});
        return {};
    }

    Status removeValue(QStringView name) override
    {
        if (const Status allowed = check(key_access::SetValue); !allowed)
            return allowed;
        const auto found = find(name);
        if (found == m_node->values.end())
            return Error{error::FileNotFound, {}};
        m_node->values.erase(found);
        return {};
    }

private:
    std::vector<FakeRegistry::Value>::iterator find(QStringView name) const
    {
        return std::ranges::find_if(
            m_node->values, [&](const auto& value) { return foldedEquals(value.name, name); });
    }

    Status check(quint32 right) const
    {
        if (const auto failure = m_calls.note({}))
            return *failure;
        return m_rights & right ? Status() : Status(Error{error::AccessDenied, {}});
    }

    FakeCalls& m_calls;
    QStringList& m_asked;
    std::shared_ptr<Node> m_node;
    quint32 m_rights;
    OpenMark m_mark;
};

} // namespace

std::shared_ptr<Node> Node::subkey(QStringView wanted) const
{
    const auto found
        = std::ranges::find_if(subkeys, [&](const auto& key) { return foldedEquals(key->name, wanted); });
    return found == subkeys.end() ? nullptr : *found;
}

FakeRegistry::FakeRegistry(FakeCalls& calls) : m_calls(calls) { }

Node& FakeRegistry::node(QStringView path)
{
    Node* current = m_root.get();
    for (const QStringView name : path.split(u'\\')) {
        if (!current->subkey(name))
            current->subkeys.push_back(std::make_shared<Node>(Node{name.toString(), 0, {}, {}}));
        current = current->subkey(name).get();
    }
    return *current;
}

RegistryKeyHandle FakeRegistry::key(QStringView path)
{
    node(path);
    std::shared_ptr<Node> current = m_root;
    for (const QStringView name : path.split(u'\\'))
        current = current->subkey(name);
    return std::make_unique<FakeKey>(m_calls, asked, current, key_access::AllAccess);
}

void FakeRegistry::load(QStringView lines)
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

Result<RegistryKeyHandle> FakeRegistry::localMachine()
{
    if (const auto failure = m_calls.note({}))
        return *failure;
    return RegistryKeyHandle(std::make_unique<FakeKey>(m_calls, asked, m_root, key_access::AllAccess));
}

} // namespace quoril::test
