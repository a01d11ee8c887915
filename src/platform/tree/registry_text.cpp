#include "platform/tree/registry_text.h"

#include "formats/name_case.h"
#include "formats/reg_text.h"
#include "platform/tree/hive_key.h"
#include "platform/tree/tree_registry.h"

#include <QStringList>

#include <algorithm>
#include <vector>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr QStringView rootName = u"HKEY_LOCAL_MACHINE";

/// The path without the root's name, in either of its spellings; other roots stay and lead nowhere.
QStringView belowRoot(QStringView path)
{
    const qsizetype end = path.indexOf(u'\\');
    const QStringView first = path.left(end < 0 ? path.size() : end);
    if (!foldedEquals(first, rootName) && !foldedEquals(first, u"HKLM"))
        return path;
    return end < 0 ? QStringView() : path.mid(end + 1);
}

QStringView hiveOf(QStringView path)
{
    const QStringView below = belowRoot(path);
    const qsizetype end = below.indexOf(u'\\');
    return below.left(end < 0 ? below.size() : end);
}

/// Carries operations out through keys, so that links are followed as everywhere.
class KeySink : public regtext::Sink
{
public:
    explicit KeySink(RegistryKey& localMachine) : m_localMachine(localMachine) { }

    Status createKey(QStringView path) override { return createPath(path); }

    Status deleteKey(QStringView path) override
    {
        m_last.reset();
        const QStringView below = belowRoot(path);
        const qsizetype end = below.lastIndexOf(u'\\');
        const auto parent
            = openPath(m_localMachine, below.left(qMax<qsizetype>(end, 0)), key_access::AllAccess);
        return withoutNotFound(parent ? (*parent)->removeTree(below.mid(end + 1)) : Status(parent.failure()));
    }

    Status setValue(QStringView path, QStringView name, quint32 type, const QByteArray& data) override
    {
        if (Status status = createPath(path); !status)
            return status;
        return m_last->setValue(name, {type, data});
    }

    Status deleteValue(QStringView path, QStringView name) override
    {
        const auto key = openPath(m_localMachine, belowRoot(path), key_access::AllAccess);
        return withoutNotFound(key ? (*key)->removeValue(name) : Status(key.failure()));
    }

private:
    static Status withoutNotFound(const Status& status)
    {
        return status.errorNumber() == error::FileNotFound ? Status() : status;
    }

    /// Makes the key of the path the last one. The values of a key follow each other, as a rule.
    Status createPath(QStringView path)
    {
        if (m_last && path == m_lastPath)
            return {};
        RegistryKeyHandle last;
        for (const QStringView name : belowRoot(path).split(u'\\', Qt::SkipEmptyParts)) {
            Result<RegistryKeyHandle> next
                = (last ? *last : m_localMachine).create(name, key_access::AllAccess);
            if (!next)
                return next.failure();
            last = *std::move(next);
        }
        if (!last)
            return Error{error::AccessDenied, {}};
        m_last = std::move(last);
        m_lastPath = path.toString();
        return {};
    }

    RegistryKey& m_localMachine;
    RegistryKeyHandle m_last;
    QString m_lastPath;
};

} // namespace

Status importRegistryText(TreeRegistry& registry, const QByteArray& text)
{
    const Result<std::vector<regtext::Operation>> operations = regtext::parse(text);
    if (!operations)
        return operations.failure();
    std::vector<std::unique_ptr<RegistryTransaction>> transactions;
    for (const QStringView hive : {u"SOFTWARE", u"SYSTEM"}) {
        const bool isTouched = std::any_of(
            operations->begin(), operations->end(), [hive](const regtext::Operation& operation) {
                return foldedEquals(hiveOf(operation.path), hive);
            });
        if (!isTouched)
            continue;
        auto transaction = registry.beginTransaction(hive);
        if (!transaction)
            return transaction.failure();
        transactions.push_back(*std::move(transaction));
    }
    for (const regtext::Operation& operation : *operations) {
        const QStringView hive = hiveOf(operation.path);
        if (!foldedEquals(hive, u"SOFTWARE") && !foldedEquals(hive, u"SYSTEM"))
            return Error{error::FileNotFound, u"line %1: %2"_s.arg(operation.line).arg(operation.path)};
    }
    const Result<RegistryKeyHandle> localMachine = registry.localMachine();
    if (!localMachine)
        return localMachine.failure();
    KeySink sink(**localMachine);
    Status status = regtext::apply(*operations, sink);
    for (auto& transaction : transactions) {
        if (status)
            status = transaction->commit();
    }
    return status;
}

Result<QByteArray> exportRegistryText(TreeRegistry& registry, QStringView path)
{
    const Result<RegistryKeyHandle> localMachine = registry.localMachine();
    if (!localMachine)
        return localMachine.failure();
    const QStringView below = belowRoot(path);
    const Result<RegistryKeyHandle> key = openPath(**localMachine, below, key_access::Read);
    if (!key)
        return key.failure();
    const auto* hiveKey = dynamic_cast<const HiveKey*>(key->get());
    if (!hiveKey)
        return Error{error::FileNotFound, {}};
    return hiveKey->exportText(rootName.toString() + u'\\' + below.toString());
}

} // namespace quoril
