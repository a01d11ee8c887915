#include "platform/tree/tree_event_logs.h"

#include "formats/evt_appender.h"
#include "formats/evt_reader.h"
#include "formats/evtx_reader.h"
#include "formats/name_case.h"
#include "platform/host/file_lock.h"
#include "platform/host/host_file.h"
#include "platform/terminal.h"
#include "platform/tree/tree_paths.h"

#include <algorithm>
#include <vector>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

/// The buffer that logs are read through: an event that it doesn't hold is the end of the log.
constexpr quint32 ReadingBufferBytes = 0xFFFF;

QString classicPath(QStringView name)
{
    QString stem = name.toString();
    if (foldedEquals(name, u"System"))
        stem = u"SysEvent"_s;
    else if (foldedEquals(name, u"Application"))
        stem = u"AppEvent"_s;
    return u"C:\\Windows\\System32\\config\\"_s + stem + u".Evt"_s;
}

/// One file of a log, with the entry that comes next from it.
class Source
{
public:
    virtual ~Source() = default;

    bool advance()
    {
        m_isEnd = !read(m_next);
        return !m_isEnd || isOverLimit();
    }
    EventEntry& next() { return m_next; }
    /// Whether what comes next is an event that no reading buffer holds, and with it the end of the log.
    bool isEnd() const { return m_isEnd; }

protected:
    virtual bool read(EventEntry& entry) = 0;
    virtual bool isOverLimit() const = 0;

private:
    EventEntry m_next;
    bool m_isEnd = false;
};

template <typename Reader> class FileSource : public Source
{
public:
    static Result<std::unique_ptr<Source>> open(const HostPlace& place, const EventSpan& span)
    {
        Result<std::unique_ptr<QFile>> file = openRegularFile(place, HostOpen::Read);
        if (!file)
            return file.failure();
        Result<Reader> reader = Reader::open(**file);
        if (!reader)
            return reader.failure();
        reader->setSpan(span);
        reader->setRecordLimit(ReadingBufferBytes);
        return std::unique_ptr<Source>(
            std::make_unique<FileSource>(place.path(), *std::move(file), *std::move(reader)));
    }

    FileSource(const QString& hostPath, std::unique_ptr<QFile> file, Reader reader)
        : m_hostPath(hostPath)
        , m_file(std::move(file))
        , m_reader(std::move(reader))
    {
    }

protected:
    bool read(EventEntry& entry) override
    {
        if (m_reader.next(entry))
            return true;
        if (m_reader.damage().any())
            say(m_hostPath + u": "_s + m_reader.damage().text());
        return false;
    }
    bool isOverLimit() const override { return m_reader.isOverLimit(); }

private:
    QString m_hostPath;
    std::unique_ptr<QFile> m_file;
    Reader m_reader;
};

/// The entries of several files in order of time; those of one file keep their order.
class UnionLog : public EventLog
{
public:
    explicit UnionLog(std::vector<std::unique_ptr<Source>> sources) : m_sources(std::move(sources))
    {
        std::erase_if(m_sources, [](const auto& source) { return !source->advance(); });
    }

    bool next(EventEntry& entry) override
    {
        const auto earliest
            = std::min_element(m_sources.begin(), m_sources.end(), [](const auto& left, const auto& right) {
                  return left->next().timeGenerated < right->next().timeGenerated;
              });
        if (earliest == m_sources.end() || (*earliest)->isEnd())
            return false;
        std::swap(entry, (*earliest)->next());
        if (!(*earliest)->advance())
            m_sources.erase(earliest);
        return true;
    }

private:
    std::vector<std::unique_ptr<Source>> m_sources;
};

} // namespace

Result<std::unique_ptr<EventLog>> TreeEventLogs::open(QStringView name, EventSpan span)
{
    std::vector<std::unique_ptr<Source>> sources;
    Error failure{error::FileNotFound, {}};
    const auto add = [&](const QString& machinePath, auto openSource) {
        const Result<HostPlace> host = m_paths.existing(machinePath);
        Result<std::unique_ptr<Source>> source
            = host ? openSource(*host, span) : Result<std::unique_ptr<Source>>(host.failure());
        if (source)
            sources.push_back(*std::move(source));
        else if (source.errorNumber() != error::FileNotFound && source.errorNumber() != error::PathNotFound)
            failure = source.failure();
    };
    add(u"C:\\Windows\\System32\\winevt\\Logs\\"_s + name.toString() + u".evtx"_s,
        FileSource<EvtxReader>::open);
    add(classicPath(name), FileSource<EvtReader>::open);
    if (sources.empty())
        return failure;
    return std::unique_ptr<EventLog>(std::make_unique<UnionLog>(std::move(sources)));
}

Status TreeEventLogs::report(QStringView name, const EventEntry& entry)
{
    const Result<HostPlace> host = m_paths.forCreation(classicPath(name));
    if (!host)
        return host.failure();
    const auto lock = FileLock::acquire(host->beside(u'.' + host->name + u".lock"_s));
    if (!lock)
        return lock.failure();
    const Result<std::unique_ptr<QFile>> file = openRegularFile(*host, HostOpen::ReadWrite);
    if (!file)
        return file.failure();
    Result<EvtAppender> appender = EvtAppender::open(**file);
    if (!appender)
        return appender.failure();
    if (Status status = appender->append(entry); !status)
        return status;
    if (Status status = appender->finish(); !status)
        return status;
    return flushToDisk(**file);
}

} // namespace quoril
