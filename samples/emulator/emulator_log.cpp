#include "emulator_log.h"

#include "platform/clock.h"
#include "platform/event_logs.h"
#include "platform/machine.h"
#include "platform/registry.h"
#include "platform/system_info.h"

#include <QDateTime>
#include <QtEndian>

namespace quoril::emulator {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype MaximumValueBytes = 4096;
constexpr quint32 EventSession = 0x40000001;
constexpr qsizetype TextColumn = 52;

QString tagOf(Level level)
{
    switch (level) {
    case Level::Warning:
        return u":WARN :"_s;
    case Level::Error:
        return u":ERROR:"_s;
    default:
        return u":INFO :"_s;
    }
}

quint16 eventTypeOf(Level level)
{
    switch (level) {
    case Level::Warning:
        return event_type::Warning;
    case Level::Error:
        return event_type::Error;
    default:
        return event_type::Information;
    }
}

bool isAbsolute(const QString& path)
{
    return path.startsWith(u'\\') || path.mid(1, 1) == u":";
}

/// The log's path from the settings: relative to the home folder; without a setting the service's name there.
QString logPath(Machine& machine, const QString& service)
{
    const auto root = machine.registry().localMachine();
    const QString path = u"SYSTEM\\CurrentControlSet\\Services\\"_s + service + u"\\Parameters"_s;
    const auto parameters
        = root ? openPath(**root, path, key_access::Read) : Result<RegistryKeyHandle>(root.failure());
    if (!parameters)
        return {};
    const auto home = (*parameters)->text(u"Home", MaximumValueBytes);
    const auto log = openPath(**parameters, u"session\\log\\0", key_access::Read);
    const auto name = log ? (*log)->text(u"Value", MaximumValueBytes) : Result<QString>(log.failure());
    const QString file = name ? *name : service + u".log"_s;
    if (isAbsolute(file))
        return file;
    return home && !home->isEmpty() ? *home + u'\\' + file : QString();
}

} // namespace

QString logLine(qint64 time, Level level, quint32 code, const QString& text)
{
    const QString stamp = QDateTime::fromSecsSinceEpoch(time).toString(u"yyyyMMdd hhmmss"_s);
    const QString head
        = stamp + tagOf(level) + u"  "_s + QString::number(code, 16).toUpper().rightJustified(8, u'0');
    return head.leftJustified(TextColumn, u' ') + text;
}

InstanceLog::InstanceLog(Machine& machine, const QString& service)
    : m_machine(machine)
    , m_service(service)
    , m_file(logPath(machine, service))
{
    if (const Result<QString> name = machine.systemInfo().computerName())
        m_computer = *name;
}

void InstanceLog::write(Level level, quint32 code, const QString& text)
{
    if (m_file.isEmpty())
        return;
    const QString line = logLine(m_machine.clock().now(), level, code, text) + u"\r\n"_s;
    QByteArray units(line.size() * 2, '\0');
    qToLittleEndian<quint16>(line.utf16(), line.size(), units.data());
    appendToFile(m_machine, m_file, units);
}

void InstanceLog::reportEvent(Level level, quint32 code, const QString& text)
{
    EventEntry entry;
    entry.timeGenerated = static_cast<quint32>(m_machine.clock().now());
    entry.timeWritten = entry.timeGenerated;
    entry.eventId = EventSession;
    entry.eventType = eventTypeOf(level);
    entry.sourceName = u"QUORIL Emulator"_s;
    entry.computerName = m_computer;
    entry.insertStrings.append(logLine(entry.timeGenerated, level, code, text));
    (void)m_machine.eventLogs().report(u"Application", entry).ok();
}

} // namespace quoril::emulator
