#include "platform/tree/hive_file.h"

#include "platform/terminal.h"
#include "platform/tree/hive_reading.h"
#include "platform/tree/message_table.h"
#include "platform/tree/tree_paths.h"

#include <QFile>
#include <QFileInfo>

#include <optional>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype baseBlockSize = 512;

} // namespace

HiveFile::HiveFile(const TreePaths& paths, const QString& name)
    : m_paths(paths)
    , m_machinePath(u"C:\\Windows\\System32\\config\\"_s + name)
{
}

HiveFile::~HiveFile() = default;

void HiveFile::drop()
{
    m_stamp = {};
    m_isSettled = false;
    m_isDirty = false;
    put(std::nullopt);
}

void HiveFile::reportOnce(const Error& failure)
{
    const QString text = m_machinePath + u": "_s
        + (failure.detail.isEmpty() ? windowsMessage(failure.number).trimmed() : failure.detail);
    if (text == m_told || !QFileInfo::exists(m_paths.root()))
        return;
    m_told = text;
    say(text);
}

Result<HiveFile::Stamp> HiveFile::stampNow(QFile& file)
{
    const Result<HostFileStamp> stamp = stampOf(file);
    if (!stamp)
        return stamp.failure();
    return Stamp{*stamp, file.peek(baseBlockSize)};
}

Status HiveFile::readIfReplaced()
{
    // The path is enough to find that nothing changed: whatever it leads to by now, it is the file that was
    // read.
    if (root() && m_isSettled) {
        if (const Result<HostFileStamp> now = stampAt(m_hostPath); now && *now == m_stamp.file)
            return {};
    }
    const Result<HostPlace> place = m_paths.existing(m_machinePath);
    if (place.errorNumber() == error::PathNotFound)
        return Error{error::FileNotFound, {}}; // to a registry a missing folder is a missing hive
    if (!place)
        return place.failure();
    m_hostPath = place->path();
    const Result<std::unique_ptr<QFile>> file = openRegularFile(*place, HostOpen::Read);
    if (!file)
        return file.failure();
    Result<Stamp> stamp = stampNow(**file);
    if (!stamp)
        return stamp.failure();
    m_isSettled = isSettled(stamp->file);
    return root() && *stamp == m_stamp ? Status() : load(**file, *std::move(stamp));
}

Status HiveFile::load(QFile& file, Stamp stamp)
{
    std::optional<regf::Recovery> recovery;
    const auto openLog = [this](QStringView suffix) -> Result<std::unique_ptr<QFile>> {
        const Result<HostPlace> log = m_paths.existing(m_machinePath + suffix.toString());
        if (!log)
            return log.failure();
        return openRegularFile(*log, HostOpen::Read);
    };
    Result<regf::Hive> hive = readHive(file, openLog, recovery);
    if (!hive)
        return hive.failure();
    if (recovery)
        reportOnce({error::Success, recovery->summary()});
    m_losesChanges = recovery && recovery->losesChanges();
    m_stamp = std::move(stamp);
    m_damageReported = false;
    put(*std::move(hive));
    return {};
}

void HiveFile::reportDamage()
{
    if (m_damageReported || !hive() || !hive()->damaged())
        return;
    m_damageReported = true;
    reportOnce({error::RegistryCorrupt,
        u"the hive is damaged ("_s + hive()->problems().value(0) + u"); what lies there is missing"_s});
}

Status HiveFile::refresh()
{
    const std::lock_guard locker(mutex());
    if (m_inTransaction)
        return {};
    Status status = readIfReplaced();
    if (!status) {
        drop();
        reportOnce(status.failure());
    }
    return status;
}

/// What can't be read would be lost in the new file, and so would what stands only in the hive's own log.
Status HiveFile::refuseDamage()
{
    if (m_losesChanges)
        return Error{error::RegistryCorrupt, m_machinePath + u" has changes in its log that are not in it"_s};
    return hive()->rewritable();
}

Status HiveFile::begin()
{
    if (Status status = refresh(); !status)
        return status;
    const Result<HostPlace> place = m_paths.existing(m_machinePath);
    if (!place)
        return place.failure();
    m_place = *place;
    Result<std::unique_ptr<FileLock>> lock
        = FileLock::acquire(m_place->beside(u'.' + m_place->name + u".lock"_s));
    if (!lock)
        return lock.failure();
    m_lock = *std::move(lock);
    Status status = refresh();
    if (status)
        status = refuseDamage();
    if (!status)
        m_lock.reset();
    else
        m_inTransaction = true;
    return status;
}

Status HiveFile::change(const Change& apply)
{
    const std::lock_guard locker(mutex());
    const bool isAlone = !m_inTransaction;
    if (isAlone) {
        if (Status status = begin(); !status)
            return status;
    }
    m_isDirty = true;
    Status status = apply(*root(), currentFiletime());
    if (!isAlone)
        return status;
    if (status)
        return commit();
    rollBack();
    return status;
}

Status HiveFile::write()
{
    const Result<QByteArray> bytes = hive()->serialize(currentFiletime());
    if (!bytes)
        return bytes.failure();
    return replaceFile(*m_place, *bytes);
}

Status HiveFile::commit()
{
    Status status;
    if (m_isDirty)
        status = write();
    if (!status) {
        rollBack();
        return status;
    }
    if (m_isDirty) {
        // The state in memory is that of the new file.
        const Result<std::unique_ptr<QFile>> file = openRegularFile(*m_place, HostOpen::Read);
        Result<Stamp> stamp = file ? stampNow(**file) : Result<Stamp>(file.failure());
        m_stamp = stamp ? *std::move(stamp) : Stamp();
    }
    m_isDirty = false;
    m_isSettled = false;
    m_inTransaction = false;
    m_place.reset();
    m_lock.reset();
    return status;
}

void HiveFile::rollBack()
{
    if (m_isDirty)
        drop(); // it is read again from its file
    m_inTransaction = false;
    m_place.reset();
    m_lock.reset();
    if (!root())
        static_cast<void>(refresh());
}

} // namespace quoril
