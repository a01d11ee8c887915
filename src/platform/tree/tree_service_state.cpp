#include "platform/tree/tree_service_state.h"

#include "formats/name_case.h"
#include "platform/host/host_file.h"
#include "platform/terminal.h"
#include "platform/tree/tree_paths.h"

#include <QCryptographicHash>
#include <QFileInfo>
#include <QMap>

#include <array>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 MaximumRecordBytes = 16384;

struct StateWord
{
    quint32 state;
    const char* word;
};
constexpr std::array<StateWord, 7> StateWords = {{
    {service_state::Stopped, "stopped"},
    {service_state::StartPending, "start-pending"},
    {service_state::StopPending, "stop-pending"},
    {service_state::Running, "running"},
    {service_state::ContinuePending, "continue-pending"},
    {service_state::PausePending, "pause-pending"},
    {service_state::Paused, "paused"},
}};

/// A file name that differs for every service name without regard to case, and means the same on every
/// host. A name too long for a file is known by its digest.
QString encodedName(QStringView service)
{
    constexpr qsizetype longest = 160;
    const QByteArray name = upcase(service).toUtf8();
    const QByteArray encoded = name.toPercentEncoding({}, ".~");
    if (encoded.size() <= longest)
        return QString::fromLatin1(encoded);
    return u"%~"_s + QString::fromLatin1(QCryptographicHash::hash(name, QCryptographicHash::Sha256).toHex());
}

void appendProcess(QByteArray& text, const QByteArray& prefix, const std::optional<ProcessIdentity>& process)
{
    if (!process)
        return;
    text += prefix + "pid=" + QByteArray::number(process->pid) + '\n';
    text += prefix + "start=" + QByteArray::number(process->startTicks) + '\n';
    text += prefix + "boot=" + process->boot + '\n';
    text += prefix + "image=" + process->image.toPercentEncoding("/ ") + '\n';
}

std::optional<ProcessIdentity> processIn(const QMap<QByteArray, QByteArray>& values, const QByteArray& prefix)
{
    if (!values.contains(prefix + "pid"))
        return std::nullopt;
    return ProcessIdentity{values[prefix + "pid"].toInt(), values[prefix + "start"].toULongLong(),
        values[prefix + "boot"], QByteArray::fromPercentEncoding(values[prefix + "image"])};
}

Result<HostFolder> folderAt(const Result<HostPlace>& place)
{
    return place ? place->folder.folder(place->name) : Result<HostFolder>(place.failure());
}

Result<HostFolder> madeFolder(const TreePaths& paths, const QString& machinePath)
{
    if (const Result<HostPlace> there = paths.existing(machinePath); there)
        return folderAt(there);
    const Result<HostPlace> place = paths.forCreation(machinePath);
    return place ? makeHostFolder(*place) : Result<HostFolder>(place.failure());
}

constexpr QStringView ParentPath = u"C:\\ProgramData\\Quoril\\services";

} // namespace

QByteArray ServiceRecord::toText() const
{
    QByteArray text;
    for (const StateWord& each : StateWords)
        if (each.state == status.currentState)
            text += QByteArray("state=") + each.word + '\n';
    text += "checkpoint=" + QByteArray::number(status.checkPoint) + '\n';
    text += "wait-hint=" + QByteArray::number(status.waitHintMilliseconds) + '\n';
    text += "exit-code=" + QByteArray::number(status.win32ExitCode) + '\n';
    appendProcess(text, "", service);
    appendProcess(text, "host-", host);
    return text;
}

std::optional<ServiceRecord> ServiceRecord::fromText(const QByteArray& text)
{
    QMap<QByteArray, QByteArray> values;
    for (const QByteArray& line : text.split('\n'))
        if (const qsizetype sign = line.indexOf('='); sign > 0)
            values.insert(line.first(sign).trimmed(), line.mid(sign + 1).trimmed());
    ServiceRecord record;
    record.status.currentState = 0;
    for (const StateWord& each : StateWords)
        if (values.value("state") == each.word)
            record.status.currentState = each.state;
    if (record.status.currentState == 0)
        return std::nullopt;
    record.status.checkPoint = values.value("checkpoint").toUInt();
    record.status.waitHintMilliseconds = values.value("wait-hint").toUInt();
    record.status.win32ExitCode = values.value("exit-code").toUInt();
    record.service = processIn(values, "");
    record.host = processIn(values, "host-");
    return record;
}

Result<HostFolder> ServiceFolder::parent(const TreePaths& paths)
{
    return folderAt(paths.existing(ParentPath));
}

Result<std::unique_ptr<FileLock>> ServiceFolder::lockServices(const Result<HostFolder>& parent)
{
    if (!parent)
        return parent.failure();
    return FileLock::acquire({*parent, u".lock"_s});
}

Result<HostFolder> ServiceFolder::makeParent(const TreePaths& paths)
{
    for (const QString& above : {u"C:\\ProgramData"_s, u"C:\\ProgramData\\Quoril"_s})
        if (Result<HostFolder> made = madeFolder(paths, above); !made)
            return made;
    return madeFolder(paths, ParentPath.toString());
}

ServiceFolder::ServiceFolder(const TreePaths& paths, QStringView service)
{
    Result<HostFolder> above = parent(paths);
    if (!above)
        return;
    m_parent = *std::move(above);
    // The name is this program's own, in one spelling.
    if (Result<HostFolder> folder = m_parent->folder(encodedName(service)); folder)
        m_folder = *std::move(folder);
}

Result<ServiceFolder> ServiceFolder::make(const TreePaths& paths, QStringView service)
{
    Result<HostFolder> above = makeParent(paths);
    if (!above)
        return above.failure();
    Result<HostFolder> folder = makeHostFolder({*above, encodedName(service)});
    if (!folder)
        return folder.failure();
    return ServiceFolder(*std::move(above), *std::move(folder));
}

void ServiceFolder::remove() const
{
    if (!exists())
        return;
    clearRun();
    for (const QStringView name : {u"state", u".state.new", u"host", u"delete"})
        static_cast<void>(removeHostFile(place(name)));
    static_cast<void>(removeHostFolder({*m_parent, QFileInfo(path()).fileName()}));
}

bool ServiceFolder::isStopAsked() const
{
    return exists() && hostEntry(place(u"stop")).ok();
}

Status ServiceFolder::askStop() const
{
    if (!exists())
        return Error{error::PathNotFound, {}};
    const auto made = openRegularFile(place(u"stop"), HostOpen::ReadWrite);
    return made ? Status() : Status(made.failure());
}

void ServiceFolder::clearRun() const
{
    for (const QStringView name : {u"report", u".report.new", u"stop"})
        if (exists())
            static_cast<void>(removeHostFile(place(name)));
}

ServiceRecord ServiceFolder::current() const
{
    const auto found = recorded();
    if (!found)
        return {{service_state::Stopped, error::ServiceNeverStarted, 0, 0}, {}, {}};
    if (found->status.currentState == service_state::Stopped)
        return *found;
    const bool hasHost = found->host && found->host->isAlive();
    const bool hasProcess = hasHost || (found->service && found->service->isAlive());
    // Without its host a service still reports its status, its end last: so this is read when it may have
    // ended.
    const auto last = hasHost ? std::nullopt : reported();
    const bool hasReportedEnd = last && last->status.currentState == service_state::Stopped;
    if (!hasProcess) {
        // The host records the end of the service before its own: it may have done so since.
        const auto again = recorded();
        if (again && again->status.currentState == service_state::Stopped)
            return *again;
        const quint32 exitCode = hasReportedEnd ? last->status.win32ExitCode : error::ProcessAborted;
        return {{service_state::Stopped, exitCode, 0, 0}, {}, {}};
    }
    ServiceRecord record = *found;
    if (last)
        record.status = last->status;
    if (hasReportedEnd)
        record.status.currentState = service_state::StopPending;
    if (isStopAsked())
        record.status.currentState = service_state::StopPending;
    return record;
}

std::optional<ServiceRecord> ServiceFolder::recorded() const
{
    if (!exists())
        return std::nullopt;
    const HostPlace state = place(u"state");
    const auto opened = openRegularFile(state, HostOpen::Read);
    if (!opened)
        return std::nullopt;
    if (!isOnlyOurs(**opened)) {
        sayOnce(state.path()
            + u": others than this user and root could have written it; the service counts as stopped"_s);
        return std::nullopt;
    }
    return ServiceRecord::fromText((*opened)->read(MaximumRecordBytes));
}

std::optional<ServiceRecord> ServiceFolder::read(QStringView name) const
{
    if (!exists())
        return std::nullopt;
    const auto opened = openRegularFile(place(name), HostOpen::Read);
    return opened ? ServiceRecord::fromText((*opened)->read(MaximumRecordBytes)) : std::nullopt;
}

Status ServiceFolder::write(QStringView name, const ServiceRecord& record) const
{
    if (!exists())
        return Error{error::PathNotFound, {}};
    // Not forced to the disk: a loss of power ends the processes that the record speaks of.
    const HostPlace temporary = place(u'.' + name.toString() + u".new"_s);
    const QByteArray text = record.toText();
    static_cast<void>(removeHostFile(temporary));
    const auto out = openRegularFile(temporary, HostOpen::NewOwn);
    if (!out)
        return out.failure();
    const bool isWritten = (*out)->write(text) == text.size() && (*out)->flush();
    (*out)->close();
    if (isWritten && renameHostFile(temporary, name.toString()))
        return {};
    static_cast<void>(removeHostFile(temporary));
    return Error{error::WriteFault, temporary.path()};
}

} // namespace quoril
