#include "platform/tree/tree_service_state.h"

#include "formats/name_case.h"
#include "platform/host/host_file.h"
#include "platform/tree/tree_paths.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
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

Result<QString> madeFolder(const TreePaths& paths, const QString& machinePath)
{
    if (Result<QString> there = paths.existing(machinePath); there)
        return there;
    const Result<QString> place = paths.forCreation(machinePath);
    if (!place)
        return place.failure();
    if (Status made = makeHostFolder(*place); !made)
        return made.failure();
    return *place;
}

/// Where a file of a service can't be made, the tree can't be written.
Error asChange(Error failure)
{
    if (failure.number == error::AccessDenied)
        failure.number = error::WriteProtect;
    return failure;
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

QString ServiceFolder::parent(const TreePaths& paths)
{
    const Result<QString> there = paths.existing(ParentPath);
    return there ? *there : QString();
}

Result<std::unique_ptr<FileLock>> ServiceFolder::lockServices(const QString& parent)
{
    if (parent.isEmpty())
        return Error{error::PathNotFound, {}};
    return FileLock::acquire(parent + u"/.lock"_s);
}

Result<QString> ServiceFolder::makeParent(const TreePaths& paths)
{
    for (const QString& above : {u"C:\\ProgramData"_s, u"C:\\ProgramData\\Quoril"_s})
        if (const Result<QString> made = madeFolder(paths, above); !made)
            return made.failure();
    return madeFolder(paths, ParentPath.toString());
}

ServiceFolder::ServiceFolder(const TreePaths& paths, QStringView service)
{
    const QString machinePath = ParentPath.toString() + u'\\' + encodedName(service);
    if (const Result<QString> place = paths.forCreation(machinePath); place)
        m_path = *place;
}

Result<ServiceFolder> ServiceFolder::make(const TreePaths& paths, QStringView service)
{
    if (const Result<QString> above = makeParent(paths); !above)
        return above.failure();
    ServiceFolder folder(paths, service);
    if (folder.m_path.isEmpty())
        return Error{error::AccessDenied, {}};
    if (Status made = makeHostFolder(folder.m_path); !made)
        return made.failure();
    return folder;
}

void ServiceFolder::remove() const
{
    if (m_path.isEmpty())
        return;
    for (const QStringView name :
        {u"state", u".state.new", u"report", u".report.new", u"stop", u"host", u"delete"})
        QFile::remove(file(name));
    QDir().rmdir(m_path);
}

bool ServiceFolder::isStopAsked() const
{
    return QFileInfo::exists(file(u"stop"));
}

Status ServiceFolder::askStop() const
{
    const auto made = openRegularFile(file(u"stop"), HostOpen::ReadWrite);
    return made ? Status() : asChange(made.failure());
}

void ServiceFolder::clearRun() const
{
    for (const QStringView name : {u"report", u".report.new", u"stop"})
        QFile::remove(file(name));
}

ServiceRecord ServiceFolder::current() const
{
    const auto found = m_path.isEmpty() ? std::nullopt : recorded();
    if (!found)
        return {{service_state::Stopped, error::ServiceNeverStarted, 0, 0}, {}, {}};
    if (found->status.currentState == service_state::Stopped)
        return *found;
    const bool hasHost = found->host && found->host->isAlive();
    const bool hasProcess = hasHost || (found->service && found->service->isAlive());
    // Without its host a service still tells of itself, its end last: so this is read when it may have ended.
    const auto told = hasHost ? std::nullopt : reported();
    const bool hasTold = told && told->status.currentState == service_state::Stopped;
    if (!hasProcess) {
        // The host records the end of the service before its own: it may have done so since.
        const auto again = recorded();
        if (again && again->status.currentState == service_state::Stopped)
            return *again;
        const quint32 exitCode = hasTold ? told->status.win32ExitCode : error::ProcessAborted;
        return {{service_state::Stopped, exitCode, 0, 0}, {}, {}};
    }
    ServiceRecord record = *found;
    if (told)
        record.status = told->status;
    if (hasTold)
        record.status.currentState = service_state::StopPending;
    if (isStopAsked())
        record.status.currentState = service_state::StopPending;
    return record;
}

std::optional<ServiceRecord> ServiceFolder::read(QStringView name) const
{
    const auto opened = openRegularFile(file(name), HostOpen::Read);
    return opened ? ServiceRecord::fromText((*opened)->read(MaximumRecordBytes)) : std::nullopt;
}

Status ServiceFolder::write(QStringView name, const ServiceRecord& record) const
{
    // Not forced to the disk: a loss of power ends the processes that the record speaks of.
    const QString temporary = file(u"."_s + name.toString() + u".new"_s);
    const QByteArray text = record.toText();
    QFile::remove(temporary);
    const auto out = openRegularFile(temporary, HostOpen::Write);
    if (!out)
        return asChange(out.failure());
    const bool isWritten = (*out)->write(text) == text.size() && (*out)->flush();
    (*out)->close();
    if (isWritten && moveHostFile(temporary, file(name)))
        return {};
    QFile::remove(temporary);
    return Error{error::WriteFault, file(name)};
}

} // namespace quoril
