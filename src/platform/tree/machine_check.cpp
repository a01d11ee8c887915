#include "platform/tree/machine_check.h"

#include "formats/evt_reader.h"
#include "formats/evtx_reader.h"
#include "formats/name_case.h"
#include "platform/host/host_file.h"
#include "platform/tree/hive_reading.h"
#include "platform/tree/message_table.h"
#include "platform/tree/tree_paths.h"

#include <algorithm>
#include <array>
#include <optional>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

using LogState = regf::LogUse::State;

constexpr QStringView configFolder = u"C:\\Windows\\System32\\config";
constexpr QStringView eventFolder = u"C:\\Windows\\System32\\winevt\\Logs";

QString why(const Error& failure)
{
    return failure.detail.isEmpty() ? windowsMessage(failure.number).trimmed() : failure.detail;
}

CheckedFile checkedFile(const QString& path, QStringView kind, QStringView state, bool isWhole)
{
    CheckedFile file;
    file.path = path;
    file.kind = kind.toString();
    file.state = state.toString();
    file.isWhole = isWhole;
    return file;
}

/// A folder of the machine with the names of its files; both empty where there is none.
struct MachineFolder
{
    MachineFolder(const TreePaths& paths, const QString& machinePath) : machine(machinePath)
    {
        const Result<HostPlace> found = paths.existing(machinePath);
        const Result<HostFolder> folder
            = found ? found->folder.folder(found->name) : Result<HostFolder>(found.failure());
        if (!folder)
            return;
        host = *folder;
        for (const QString& name : folder->names()) {
            const Result<HostEntry> entry = hostEntry({*folder, name});
            if (entry && entry->isFolder)
                folders.append(name);
            else
                files.append(name);
        }
    }

    Result<std::unique_ptr<QFile>> open(const QString& name) const
    {
        return openRegularFile({*host, name}, HostOpen::Read);
    }

    /// The name as the folder has it; empty for one that it has not.
    QString nameOf(QStringView name) const
    {
        const auto found = std::find_if(
            files.begin(), files.end(), [name](const QString& each) { return foldedEquals(each, name); });
        return found == files.end() ? QString() : *found;
    }

    QString machine;
    std::optional<HostFolder> host;
    QStringList files;
    QStringList folders; // no links
};

void countKeys(const regf::Key& key, CheckedFile& hive)
{
    ++hive.keys;
    hive.values += qint64(key.values().size());
    for (std::size_t i = 0; i < key.childCount(); ++i)
        countKeys(*key.childAt(i), hive);
}

QStringView wordOf(LogState state)
{
    switch (state) {
    case LogState::Applied:
        return u"applied";
    case LogState::Damaged:
        return u"damaged";
    case LogState::Unused:
        break;
    }
    return u"unused";
}

class MachineCheck
{
public:
    explicit MachineCheck(const TreePaths& paths) : m_paths(paths) { }

    void checkHives();
    void checkUsers(const QString& profiles);
    void checkEventLogs(QStringView folder, QStringView suffix);
    std::vector<CheckedFile> take() { return std::move(m_files); }

private:
    void checkHive(const MachineFolder& folder, const QString& name);
    void checkHiveLogs(const MachineFolder& folder, const QString& name, const regf::Recovery* recovery);
    template <typename Reader> bool readEventLog(QFile& file, CheckedFile& checked);

    const TreePaths& m_paths;
    std::vector<CheckedFile> m_files;
};

void MachineCheck::checkHives()
{
    const MachineFolder config(m_paths, configFolder.toString());
    for (const QString& name : config.files) {
        static const QStringList always{u"SYSTEM"_s, u"SOFTWARE"_s, u"SAM"_s, u"SECURITY"_s, u"DEFAULT"_s};
        const bool isLog = name.contains(u".LOG"_s, Qt::CaseInsensitive);
        const auto file = isLog ? Error{error::NotSupported, {}} : config.open(name);
        const bool isNamed = std::any_of(
            always.begin(), always.end(), [&name](const QString& each) { return foldedEquals(each, name); });
        if (!isLog && (isNamed || (file && (*file)->peek(4) == "regf")))
            checkHive(config, name);
    }
    if (config.nameOf(u"SYSTEM").isEmpty()) {
        CheckedFile missing
            = checkedFile(configFolder.toString() + u"\\SYSTEM"_s, u"hive", u"damaged", false);
        missing.problem = windowsMessage(error::FileNotFound).trimmed();
        m_files.push_back(std::move(missing));
    }
}

void MachineCheck::checkUsers(const QString& profiles)
{
    for (const QString& user : MachineFolder(m_paths, profiles).folders) {
        const std::array<std::pair<QStringView, QStringView>, 3> places
            = {{{u"", u"NTUSER.DAT"}, {u"\\AppData\\Local\\Microsoft\\Windows", u"UsrClass.dat"},
                {u"\\Local Settings\\Application Data\\Microsoft\\Windows", u"UsrClass.dat"}}};
        for (const auto& [below, hive] : places) {
            const MachineFolder folder(m_paths, profiles + u'\\' + user + below.toString());
            if (const QString name = folder.nameOf(hive); !name.isEmpty())
                checkHive(folder, name);
        }
    }
}

void MachineCheck::checkHive(const MachineFolder& folder, const QString& name)
{
    CheckedFile checked = checkedFile(folder.machine + u'\\' + name, u"hive", u"clean", true);
    std::optional<regf::Recovery> recovery;
    const auto openLog = [&](QStringView suffix) -> Result<std::unique_ptr<QFile>> {
        const QString log = folder.nameOf(QString(name + suffix.toString()));
        if (log.isEmpty())
            return Error{error::FileNotFound, {}};
        return folder.open(log);
    };
    const auto file = folder.open(name);
    const Result<regf::Hive> hive
        = file ? readHive(**file, openLog, recovery) : Result<regf::Hive>(file.failure());
    if (recovery) {
        checked.state = recovery->isRecovered() ? u"recovered"_s : u"stale"_s;
        checked.isWhole = recovery->isRecovered() && recovery->omittedBins() == 0;
        checked.problem = recovery->isRecovered() ? QString() : recovery->summary();
        for (const regf::LogUse& use : recovery->uses())
            checked.pages += qint64(use.pages);
    }
    if (hive)
        countKeys(hive->root(), checked);
    if (!hive || hive->damaged()) {
        checked.state = u"damaged"_s;
        checked.isWhole = false;
        checked.problem = (hive ? hive->problems().value(0) : why(hive.failure()))
            + (checked.problem.isEmpty() ? QString() : u"; "_s + checked.problem);
    }
    m_files.push_back(std::move(checked));
    checkHiveLogs(folder, name, recovery ? &*recovery : nullptr);
}

void MachineCheck::checkHiveLogs(
    const MachineFolder& folder, const QString& name, const regf::Recovery* recovery)
{
    for (const QStringView suffix : {u"LOG1", u"LOG2", u"LOG"}) {
        const QString log = folder.nameOf(QString(name + u'.' + suffix.toString()));
        if (log.isEmpty())
            continue;
        CheckedFile checked = checkedFile(folder.machine + u'\\' + log, u"hive-log", u"unused", true);
        for (const regf::LogUse& use : recovery ? recovery->uses() : std::vector<regf::LogUse>()) {
            if (use.name != suffix)
                continue;
            checked.state = wordOf(use.state).toString();
            checked.pages = qint64(use.pages);
            checked.problem = use.why;
        }
        m_files.push_back(std::move(checked));
    }
}

template <typename Reader> bool MachineCheck::readEventLog(QFile& file, CheckedFile& checked)
{
    Result<Reader> reader = Reader::open(file);
    if (!reader)
        return false;
    for (EventEntry entry; reader->next(entry);)
        ++checked.records;
    const EventDamage& damage = reader->damage();
    checked.damagedRecords = qint64(damage.records);
    checked.damagedChunks = qint64(damage.chunks);
    checked.isWhole = !damage.any();
    checked.state = damage.any() ? u"damaged"_s : reader->isDirty() ? u"dirty"_s : u"clean"_s;
    checked.problem = damage.any() ? damage.text() : QString();
    return true;
}

void MachineCheck::checkEventLogs(QStringView folderPath, QStringView suffix)
{
    const MachineFolder folder(m_paths, folderPath.toString());
    for (const QString& name : folder.files) {
        if (!name.endsWith(suffix, Qt::CaseInsensitive))
            continue;
        CheckedFile checked = checkedFile(folder.machine + u'\\' + name, u"event-log", u"damaged", false);
        const auto file = folder.open(name);
        if (!file)
            checked.problem = why(file.failure());
        else if (!readEventLog<EvtxReader>(**file, checked) && !readEventLog<EvtReader>(**file, checked))
            checked.problem = u"no event log"_s;
        m_files.push_back(std::move(checked));
    }
}

} // namespace

std::vector<CheckedFile> checkMachine(const TreePaths& paths)
{
    MachineCheck check(paths);
    check.checkHives();
    for (const QStringView profiles :
        {u"C:\\Users", u"C:\\Documents and Settings", u"C:\\Windows\\ServiceProfiles"})
        check.checkUsers(profiles.toString());
    check.checkEventLogs(eventFolder, u".evtx");
    check.checkEventLogs(configFolder, u".evt");
    return check.take();
}

} // namespace quoril
