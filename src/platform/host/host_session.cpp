#include "platform/host/host_session.h"

#include <QCryptographicHash>

namespace quoril {

QString treeMessage(QStringView message, const QString& treeFolder)
{
    // Registered names are short; a path may be long.
    const QByteArray tree = QCryptographicHash::hash(treeFolder.toUtf8(), QCryptographicHash::Sha1).toHex();
    return message.toString() + u'@' + QString::fromLatin1(tree);
}

} // namespace quoril
