#include "platform/tree/sample_machine.h"

#include "formats/regf_hive.h"
#include "platform/host/file_lock.h"
#include "platform/host/host_command.h"
#include "platform/host/host_file.h"
#include "platform/tree/hive_store.h"
#include "platform/tree/registry_text.h"
#include "platform/tree/tree_paths.h"
#include "platform/tree/tree_registry.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

QString resource(const QString& name)
{
    return u":/samples/machine/"_s + name;
}

Result<QByteArray> readResource(const QString& name)
{
    QFile file(resource(name));
    if (!file.open(QIODevice::ReadOnly))
        return Error{error::FileNotFound, resource(name)};
    return file.readAll();
}

Status writeFile(const QString& hostPath, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(hostPath).path());
    QFile file(hostPath);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.flush())
        return Error{error::WriteFault, hostPath + u": "_s + file.errorString()};
    return {};
}

/// The text as an emulator writes its log: units of 16 bits, lines that end in CR LF, no byte-order mark.
QByteArray asEmulatorLog(const QByteArray& utf8)
{
    const QString text = QString::fromUtf8(utf8).replace(u'\n', u"\r\n"_s);
    QByteArray units(text.size() * 2, '\0');
    for (qsizetype i = 0; i < text.size(); ++i)
        qToLittleEndian<quint16>(text[i].unicode(), units.data() + 2 * i);
    return units;
}

/// Builds the tree in an empty folder.
class Builder
{
public:
    explicit Builder(QString root) : m_root(std::move(root)) { }

    Status build()
    {
        const Result<QByteArray> manifest = readResource(u"manifest.txt"_s);
        if (!manifest)
            return manifest.failure();
        for (const QString& line : QString::fromUtf8(*manifest).split(u'\n')) {
            if (line.isEmpty() || line.startsWith(u'#'))
                continue;
            if (Status status = entry(line); !status)
                return status;
        }
        return makeRegistry();
    }

private:
    QString hostPath(QStringView machinePath) const
    {
        return m_root + u'/' + machinePath.mid(3).toString().replace(u'\\', u'/');
    }

    Status entry(const QString& line)
    {
        const QString word = line.section(u' ', 0, 0);
        const QStringList parts = line.mid(word.size() + 1).split(u" < "_s);
        const QString path = hostPath(parts.first());
        if (word == u"folder")
            return QDir().mkpath(path) ? Status() : Error{error::WriteFault, path};
        if (word == u"emulator")
            return copyEmulator(path);
        if (word == u"file")
            return writeFile(path, parts.value(1).toUtf8() + "\r\n");
        if (word != u"log")
            return Error{error::BadDatabase, u"manifest.txt: "_s + line};
        const Result<QByteArray> text = readResource(u"logs/"_s + parts.value(1));
        return text ? writeFile(path, asEmulatorLog(*text)) : Status(text.failure());
    }

    /// Links that lead out of a tree are not followed, so the program itself is put into it. Without one the
    /// services are listed and can't be started, as on any machine whose product was removed.
    static Status copyEmulator(const QString& path)
    {
        QDir().mkpath(QFileInfo(path).path());
        const QString beside
            = QCoreApplication::applicationDirPath() + u"/quoril-emulator"_s + HostProgramSuffix.toString();
        QFile program(beside);
        if (program.exists() && !program.copy(path))
            return Error{error::WriteFault, path + u": "_s + program.errorString()};
        return {};
    }

    Status makeRegistry() const
    {
        for (const QString& name : {u"SYSTEM"_s, u"SOFTWARE"_s}) {
            const quint64 now = currentFiletime();
            const Result<QByteArray> hive = regf::Hive::create(name, now).serialize(now);
            if (!hive)
                return hive.failure();
            if (Status status = writeFile(m_root + u"/Windows/System32/config/"_s + name, *hive); !status)
                return status;
        }
        const TreePaths paths(m_root);
        TreeRegistry registry(paths);
        for (const QString& name : {u"system.reg"_s, u"software.reg"_s}) {
            const Result<QByteArray> text = readResource(name);
            if (!text)
                return text.failure();
            if (Status status = importRegistryText(registry, *text); !status)
                return status;
        }
        return {};
    }

    QString m_root;
};

} // namespace

Status createSampleMachine(const QString& folder)
{
    const QString place = QDir::cleanPath(QFileInfo(folder).absoluteFilePath());
    const QString parent = QFileInfo(place).path();
    if (!QDir().mkpath(parent))
        return Error{error::PathNotFound, parent};
    const auto lock = FileLock::acquire(place + u".lock"_s);
    if (!lock)
        return lock.failure();
    if (QFileInfo(place).isDir())
        return {};
    if (QFileInfo::exists(place))
        return Error{error::FileExists, place};
    // Under the lock, what an earlier try left is nobody's.
    const QString building = place + u".new"_s;
    QDir(building).removeRecursively();
    Status status = Builder(building).build();
    if (status)
        status = moveHostFile(building, place);
    if (!status)
        QDir(building).removeRecursively();
    return status;
}

} // namespace quoril
