#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>

/// A file of the folder in the environment variable QUORIL_REAL_DATA, unpacked; empty where there is none.
inline QByteArray realData(const QString& name)
{
    const QString folder = qEnvironmentVariable("QUORIL_REAL_DATA");
    if (folder.isEmpty())
        return {};
    QProcess unpack;
    unpack.start(QStringLiteral("xz"), {QStringLiteral("-dc"), folder + u'/' + name + QStringLiteral(".xz")});
    unpack.waitForFinished();
    return unpack.readAllStandardOutput();
}
