#include "platform/tree/hive_key.h"

#include "formats/reg_text.h"

#include <QStringBuilder>
#include <QtEndian>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr quint32 GenericAll = 0x10000000;
constexpr quint32 GenericRead = 0x80000000;
constexpr quint32 GenericWrite = 0x40000000;
constexpr quint32 MaximumAllowed = 0x02000000;
constexpr QStringView linkName = u"CurrentControlSet";

/// The rights of keys that a mask stands for.
quint32 rightsOf(quint32 access)
{
    if ((access & (GenericAll | MaximumAllowed)) != 0)
        access |= key_access::AllAccess;
    if ((access & GenericRead) != 0)
        access |= key_access::Read;
    if ((access & GenericWrite) != 0)
        access |= key_access::SetValue | key_access::CreateSubKey;
    return access;
}

QString below(const QString& path, const QString& name)
{
    return path.isEmpty() ? name : QString(path % u'\\' % name);
}

} // namespace

HiveKey::HiveKey(MountedHive hive, QString path, quint32 access)
    : m_hive(std::move(hive))
    , m_path(std::move(path))
    , m_access(rightsOf(access))
{
}

Result<regf::Key*> HiveKey::key() const
{
    HiveStore& store = *m_hive.store;
    if (m_key && m_generation == store.generation())
        return m_key;
    m_key = nullptr;
    if (!store.root()) {
        if (Status status = store.refresh(); !status)
            return status.failure();
    }
    m_key = m_path.isEmpty() ? store.root() : store.root()->find(m_path);
    m_generation = store.generation();
    if (!m_key)
        return Error{error::KeyDeleted, {}};
    return m_key;
}

Result<regf::Key*> HiveKey::keyFor(quint32 right) const
{
    if ((m_access & right) != right)
        return Error{error::AccessDenied, {}};
    return key();
}

bool HiveKey::isLink(QStringView name) const
{
    return m_path.isEmpty() && m_hive.name == u"SYSTEM" && regf::Key::MaximumKeyName >= name.size()
        && foldedEquals(name, linkName);
}

/// The name of the control set in force; empty where the hive names none.
QString HiveKey::linkTarget(const regf::Key& root) const
{
    const regf::Key* select = root.child(u"Select");
    const regf::Value* current = select ? select->value(u"Current") : nullptr;
    if (!current || current->type != value_type::DWord || current->data.size() != sizeof(quint32))
        return {};
    const auto number = qFromLittleEndian<quint32>(current->data.constData());
    const QString name = u"ControlSet%1"_s.arg(number, 3, 10, QChar(u'0'));
    return root.child(name) ? name : QString();
}

/// Where the link stands among the names below SYSTEM; nothing below other keys.
std::optional<std::size_t> HiveKey::linkIndex(const regf::Key& key) const
{
    if (!isLink(linkName) || key.child(linkName) || linkTarget(key).isEmpty())
        return std::nullopt;
    std::size_t index = 0;
    while (index < key.childCount() && foldedCompare(key.childAt(index)->name(), linkName) < 0)
        ++index;
    return index;
}

RegistryKeyHandle HiveKey::handleOf(regf::Key& child, quint32 access) const
{
    auto handle = std::make_unique<HiveKey>(m_hive, below(m_path, child.name()), access);
    handle->m_key = &child;
    handle->m_generation = m_generation;
    return handle;
}

Result<RegistryKeyHandle> HiveKey::open(QStringView name, quint32 access) const
{
    const std::lock_guard locker(m_hive.store->mutex());
    if (m_path.isEmpty()) {
        if (Status status = m_hive.store->refresh(); !status)
            return status.failure();
    }
    const Result<regf::Key*> here = key();
    if (!here)
        return here.failure();
    regf::Key* child = (*here)->child(isLink(name) ? QStringView(linkTarget(**here)) : name);
    if (!child && isLink(name))
        child = (*here)->child(name);
    if (!child) {
        m_hive.store->reportDamage();
        return Error{error::FileNotFound, {}};
    }
    return handleOf(*child, access);
}

Result<RegistryKeyHandle> HiveKey::create(QStringView name, quint32 access)
{
    const std::lock_guard locker(m_hive.store->mutex());
    Result<RegistryKeyHandle> existing = open(name, access);
    if (existing || existing.errorNumber() != error::FileNotFound)
        return existing;
    if (isLink(name))
        return Error{error::AccessDenied, {}};
    QString childName;
    const Status status = apply(key_access::CreateSubKey, [&](regf::Key& parent, quint64 filetime) -> Status {
        const Result<regf::Key*> child = parent.addChild(name, filetime);
        if (!child)
            return child.failure();
        childName = (*child)->name();
        return {};
    });
    if (!status)
        return status.failure();
    return RegistryKeyHandle(std::make_unique<HiveKey>(m_hive, below(m_path, childName), access));
}

Status HiveKey::apply(quint32 right, const std::function<Status(regf::Key&, quint64)>& change)
{
    if ((m_access & right) != right)
        return Error{error::AccessDenied, {}};
    const std::lock_guard locker(m_hive.store->mutex());
    return m_hive.store->change([&](regf::Key&, quint64 filetime) -> Status {
        const Result<regf::Key*> here = key();
        return here ? change(**here, filetime) : Status(here.failure());
    });
}

Status HiveKey::removeTree(QStringView name)
{
    if (isLink(name))
        return Error{error::AccessDenied, {}};
    return apply(key_access::Delete, [this, name](regf::Key& parent, quint64 filetime) -> Status {
        m_hive.store->noteRemoval();
        return parent.removeChild(name, filetime) ? Status() : Error{error::FileNotFound, {}};
    });
}

Result<QString> HiveKey::subkeyName(quint32 index, qsizetype roomUnits) const
{
    const std::lock_guard locker(m_hive.store->mutex());
    const Result<regf::Key*> here = keyFor(key_access::EnumerateSubKeys);
    if (!here)
        return here.failure();
    std::size_t stored = index;
    QString name;
    if (const auto link = m_path.isEmpty() ? linkIndex(**here) : std::nullopt; link && stored >= *link) {
        if (stored == *link)
            name = linkName.toString();
        else
            --stored;
    }
    if (name.isEmpty()) {
        const regf::Key* child = (*here)->childAt(stored);
        if (!child) {
            m_hive.store->reportDamage();
            return Error{error::NoMoreItems, {}};
        }
        name = child->name();
    }
    if (name.size() > roomUnits)
        return Error{error::MoreData, {}};
    return name;
}

Result<QString> HiveKey::valueName(quint32 index) const
{
    const std::lock_guard locker(m_hive.store->mutex());
    const Result<regf::Key*> here = keyFor(key_access::QueryValue);
    if (!here)
        return here.failure();
    const std::vector<regf::Value>& values = (*here)->values();
    if (index >= values.size())
        return Error{error::NoMoreItems, {}};
    return values[index].name;
}

Result<RegistryValue> HiveKey::value(QStringView name, qsizetype limitBytes) const
{
    const std::lock_guard locker(m_hive.store->mutex());
    const Result<regf::Key*> here = keyFor(key_access::QueryValue);
    if (!here)
        return here.failure();
    const regf::Value* found = (*here)->value(name);
    if (!found)
        return Error{error::FileNotFound, {}};
    if (found->data.size() > limitBytes)
        return Error{error::MoreData, {}};
    return RegistryValue{found->type, found->data};
}

Status HiveKey::setValue(QStringView name, const RegistryValue& value)
{
    return apply(key_access::SetValue, [&](regf::Key& key, quint64 filetime) {
        return key.setValue(name, value.type, value.data, filetime);
    });
}

Status HiveKey::removeValue(QStringView name)
{
    return apply(key_access::SetValue, [name](regf::Key& key, quint64 filetime) -> Status {
        if (!key.removeValue(name, filetime))
            return Error{error::FileNotFound, {}};
        return {};
    });
}

Result<QByteArray> HiveKey::exportText(const QString& path) const
{
    const std::lock_guard locker(m_hive.store->mutex());
    const Result<regf::Key*> here = keyFor(key_access::Read);
    if (!here)
        return here.failure();
    // An import would follow the link, into the control set that it leads to.
    if (isLink(linkName) && (*here)->child(linkName) && !linkTarget(**here).isEmpty())
        return Error{
            error::BadDatabase, u"a text can't carry a key CurrentControlSet in the place of the link"_s};
    return regtext::write(**here, path);
}

} // namespace quoril
