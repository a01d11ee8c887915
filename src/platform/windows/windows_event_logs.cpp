#include "platform/windows/windows_event_logs.h"

#include "formats/event_log_record.h"
#include "platform/windows/win32.h"

#include <QByteArray>

#include <vector>

namespace quoril {

namespace {

using LogHandle = OwnedHandle<HANDLE, ::CloseEventLog>;
using SourceHandle = OwnedHandle<HANDLE, ::DeregisterEventSource>;

class WindowsEventLog : public EventLog
{
public:
    WindowsEventLog(LogHandle handle, EventSpan span)
        : m_handle(std::move(handle))
        , m_span(span)
        , m_buffer(BlockBytes, Qt::Uninitialized)
    {
    }

    bool next(EventEntry& entry) override
    {
        while (true) {
            while (const auto record = m_block.next()) {
                if (!m_span.contains(record->timeGenerated()))
                    continue;
                record->decode(entry);
                return true;
            }
            if (!readBlock())
                return false;
        }
    }

private:
    static constexpr qsizetype BlockBytes = 65535;

    bool readBlock()
    {
        DWORD read = 0;
        DWORD needed = 0;
        const bool succeeded
            = ::ReadEventLogW(m_handle.get(), EVENTLOG_SEQUENTIAL_READ | EVENTLOG_FORWARDS_READ, 0,
                m_buffer.data(), static_cast<DWORD>(m_buffer.size()), &read, &needed);
        if (!succeeded || read == 0)
            return false;
        m_block = EventRecordBlock(QByteArrayView(m_buffer).first(static_cast<qsizetype>(read)));
        return true;
    }

    LogHandle m_handle;
    EventSpan m_span;
    QByteArray m_buffer;
    EventRecordBlock m_block{QByteArrayView()}; // of m_buffer
};

} // namespace

Result<std::unique_ptr<EventLog>> WindowsEventLogs::open(QStringView name, EventSpan span)
{
    LogHandle handle(::OpenEventLogW(nullptr, wide(name.toString())));
    if (!handle)
        return lastError();
    return std::unique_ptr<EventLog>(std::make_unique<WindowsEventLog>(std::move(handle), span));
}

Status WindowsEventLogs::report(QStringView, const EventEntry& entry)
{
    const SourceHandle source(::RegisterEventSourceW(nullptr, wide(entry.sourceName)));
    if (!source)
        return lastError();
    const QStringList texts = entry.insertStrings.toList();
    std::vector<const wchar_t*> strings;
    for (const QString& text : texts)
        strings.push_back(wide(text));
    QByteArray sid = entry.userSid;
    QByteArray data = entry.data;
    return statusOfCall(::ReportEventW(source.get(), entry.eventType, entry.eventCategory, entry.eventId,
        sid.isEmpty() ? nullptr : sid.data(), static_cast<WORD>(strings.size()),
        static_cast<DWORD>(data.size()), strings.empty() ? nullptr : strings.data(),
        data.isEmpty() ? nullptr : data.data()));
}

} // namespace quoril
