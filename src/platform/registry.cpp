#include "platform/registry.h"

#include <QStringList>
#include <QtEndian>

namespace quoril {

namespace {

QString unitsOf(const QByteArray& data)
{
    QString text(data.size() / 2, Qt::Uninitialized);
    qFromLittleEndian<quint16>(data.constData(), text.size(), text.data());
    return text;
}

QByteArray bytesOf(QStringView text)
{
    QByteArray data(text.size() * 2, Qt::Uninitialized);
    qToLittleEndian<quint16>(text.utf16(), text.size(), data.data());
    return data;
}

constexpr QChar Zero(u'\0');

} // namespace

QString RegistryValue::text() const
{
    QString units = unitsOf(data);
    if (const qsizetype end = units.indexOf(Zero); end >= 0)
        units.truncate(end);
    return units;
}

Result<RegistryKeyHandle> RegistryKey::openBelow(QStringView path, quint32 access) const
{
    constexpr quint32 none = 0;
    const qsizetype last = path.lastIndexOf(u'\\');
    if (last < 0)
        return open(path, access);
    const auto above = openPath(*this, path.first(last), none);
    return above ? (*above)->open(path.sliced(last + 1), access) : Result<RegistryKeyHandle>(above.failure());
}

Result<QString> RegistryKey::text(QStringView name, qsizetype limitBytes) const
{
    const auto found = value(name, limitBytes);
    return found ? found->text() : Result<QString>(found.failure());
}

Result<QStringList> RegistryKey::multiString(QStringView name, qsizetype limitBytes) const
{
    const auto found = value(name, limitBytes);
    if (!found)
        return found.failure();
    const QString units = unitsOf(found->data);
    QStringList texts;
    for (qsizetype from = 0; from < units.size();) {
        qsizetype end = units.indexOf(Zero, from);
        if (end < 0)
            end = units.size();
        if (end == from)
            break;
        texts.append(units.mid(from, end - from));
        from = end + 1;
    }
    return texts;
}

Status RegistryKey::setText(QStringView name, QStringView text, quint32 type)
{
    return setValue(name, {type, bytesOf(text) + QByteArray(2, '\0')});
}

Status RegistryKey::setMultiString(QStringView name, const QStringList& texts)
{
    QByteArray data;
    for (const QString& text : texts)
        data += bytesOf(text) + QByteArray(2, '\0');
    return setValue(name, {value_type::MultiString, data + QByteArray(2, '\0')});
}

Status RegistryKey::setDWord(QStringView name, quint32 number)
{
    QByteArray data(4, Qt::Uninitialized);
    qToLittleEndian(number, data.data());
    return setValue(name, {value_type::DWord, data});
}

Result<RegistryKeyHandle> openPath(const RegistryKey& key, QStringView path, quint32 access)
{
    return openPath(key, path, [access] { return access; });
}

Result<RegistryKeyHandle> openPath(
    const RegistryKey& key, QStringView path, const std::function<quint32()>& access)
{
    RegistryKeyHandle current;
    for (const QStringView name : path.split(u'\\')) {
        auto next = (current ? *current : key).open(name, access());
        if (!next)
            return next.failure();
        current = *std::move(next);
    }
    return current;
}

} // namespace quoril
