#include "platform/tree/sample_machine.h"

#include "formats/regf_hive.h"
#include "platform/host/host_command.h"
#include "platform/host/host_file.h"
#include "platform/host/host_system.h"
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

/// The folder to which the names lead, made where it is missing.
Result<HostFolder> makeFolders(HostFolder folder, const QStringList& names)
{
    for (const QString& name : names) {
        Result<HostFolder> next = makeHostFolder({folder, name});
        if (!next)
            return next;
        folder = *std::move(next);
    }
    return folder;
}

Result<std::unique_ptr<QFile>> writeFile(const HostFolder& root, QStringList names, const QByteArray& bytes)
{
    const QString name = names.takeLast();
    const Result<HostFolder> folder = makeFolders(root, names);
    if (!folder)
        return folder.failure();
    const HostPlace place{*folder, name};
    Result<std::unique_ptr<QFile>> file = openRegularFile(place, HostOpen::Write);
    if (file && ((*file)->write(bytes) != bytes.size() || !(*file)->flush()))
        return Error{error::WriteFault, place.path() + u": "_s + (*file)->errorString()};
    return file;
}

Status asStatus(const Result<std::unique_ptr<QFile>>& written)
{
    return written ? Status() : Status(written.failure());
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
    explicit Builder(const HostFolder& root) : m_root(root) { }

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
    static QStringList namesOf(QStringView machinePath) { return machinePath.mid(3).toString().split(u'\\'); }

    Status entry(const QString& line)
    {
        const QString word = line.section(u' ', 0, 0);
        const QStringList parts = line.mid(word.size() + 1).split(u" < "_s);
        const QStringList names = namesOf(parts.first());
        if (word == u"folder") {
            const Result<HostFolder> made = makeFolders(m_root, names);
            return made ? Status() : Status(made.failure());
        }
        if (word == u"emulator")
            return copyEmulator(names);
        if (word == u"file")
            return asStatus(writeFile(m_root, names, parts.value(1).toUtf8() + "\r\n"));
        if (word != u"log")
            return Error{error::BadDatabase, u"manifest.txt: "_s + line};
        const Result<QByteArray> text = readResource(u"logs/"_s + parts.value(1));
        return text ? asStatus(writeFile(m_root, names, asEmulatorLog(*text))) : Status(text.failure());
    }

    /// Links that lead out of a tree are not followed, so the program itself is put into it. Without one the
    /// services are listed and can't be started, as on any machine whose product was removed.
    Status copyEmulator(const QStringList& names) const
    {
        const QString beside
            = QCoreApplication::applicationDirPath() + u"/quoril-emulator"_s + HostProgramSuffix.toString();
        QFile program(beside);
        if (!program.open(QIODevice::ReadOnly))
            return {};
        const auto copy = writeFile(m_root, names, program.readAll());
        if (!copy)
            return copy.failure();
        // Whoever may read it may run it.
        constexpr QFile::Permissions run
            = QFile::ExeOwner | QFile::ExeUser | QFile::ExeGroup | QFile::ExeOther;
        (*copy)->setPermissions((*copy)->permissions() | (program.permissions() & run));
        return {};
    }

    Status makeRegistry() const
    {
        for (const QString& name : {u"SYSTEM"_s, u"SOFTWARE"_s}) {
            const quint64 now = currentFiletime();
            const Result<QByteArray> hive = regf::Hive::create(name, now).serialize(now);
            if (!hive)
                return hive.failure();
            const QStringList names = {u"Windows"_s, u"System32"_s, u"config"_s, name};
            if (Status status = asStatus(writeFile(m_root, names, *hive)); !status)
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

    HostFolder m_root;
};

} // namespace

Status createSampleMachine(const QString& folder)
{
    reportFileSizeLimits();
    const QString place = QDir::cleanPath(QFileInfo(folder).absoluteFilePath());
    const QFileInfo info(place);
    if (!QDir().mkpath(info.path()))
        return Error{error::PathNotFound, info.path()};
    if (info.exists() || info.isSymLink())
        return Error{error::FileExists, place};
    const Result<HostFolder> parent = HostFolder::open(info.path());
    if (!parent)
        return parent.failure();
    // Nobody else can be in a folder that this program has just made.
    Result<NewHostFolder> building = NewHostFolder::make(*parent);
    if (!building)
        return building.failure();
    const Status built = Builder(building->folder()).build();
    return built ? building->putUnder(info.fileName()) : built;
}

} // namespace quoril
