#pragma once

#include <QByteArray>
#include <QString>
#include <QtEndian>

namespace quoril::test {

/// The text as a file of 16-bit units, and back.
inline QByteArray units(QStringView text)
{
    QByteArray bytes(text.size() * 2, '\0');
    qToLittleEndian<quint16>(text.utf16(), text.size(), bytes.data());
    return bytes;
}
inline QString textOf(const QByteArray& units)
{
    QString text(units.size() / 2, Qt::Uninitialized);
    qFromLittleEndian<quint16>(units.constData(), text.size(), text.data());
    return text;
}

} // namespace quoril::test
