#pragma once

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

namespace quoril::test {

/// What the program prints to standard output; nothing where it is missing or fails.
inline QByteArray outputOf(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished(60'000) && process.exitCode() == 0 ? process.readAllStandardOutput()
                                                                      : QByteArray();
}

/// A file of the folder in the environment variable QUORIL_REAL_DATA, unpacked; empty where there is none.
inline QByteArray realData(const QString& name)
{
    const QString folder = qEnvironmentVariable("QUORIL_REAL_DATA");
    if (folder.isEmpty())
        return {};
    return outputOf(
        QStringLiteral("xz"), {QStringLiteral("-dc"), folder + u'/' + name + QStringLiteral(".xz")});
}

/// What another reader of the format prints about a file of these bytes; nothing where it is missing or
/// fails.
inline QByteArray outputOf(const QString& reader, QStringList arguments, const QByteArray& bytes)
{
    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("file")));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        return {};
    file.close();
    return outputOf(reader, arguments << file.fileName());
}

} // namespace quoril::test
