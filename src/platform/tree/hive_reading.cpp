#include "platform/tree/hive_reading.h"

#include "formats/regf_image.h"
#include "formats/zeroed_bytes.h"
#include "platform/host/host_file.h"

#include <QtEndian>

#include <algorithm>
#include <array>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

// The registry itself holds no hive of more than 2 GB.
constexpr qint64 largestHive = 0x7FFFFFFF;
constexpr std::array<QStringView, 3> logSuffixes = {u".LOG1", u".LOG2", u".LOG"};

/// The first `wanted` bytes of the file, or zeros after its end where `padded`.
Result<ZeroedBytes> contentOf(QFile& file, qint64 wanted, bool padded = false)
{
    const qint64 size = padded ? wanted : std::min(wanted, file.size());
    if (size > largestHive)
        return Error{error::RegistryCorrupt, u"the hive is larger than any"_s};
    ZeroedBytes bytes{std::size_t(size)};
    if (bytes.size() != std::size_t(size))
        return Error{error::NotEnoughMemory, {}};
    if (Status status = readFromStart(file, bytes.span()); !status)
        return status.failure();
    return bytes;
}

struct HiveLog
{
    QString name;
    ZeroedBytes bytes;
};

/// The logs that are there. One that can't be read is as one that is damaged.
std::vector<HiveLog> readLogs(const OpenHiveLog& openLog)
{
    std::vector<HiveLog> logs;
    for (const QStringView suffix : logSuffixes) {
        const auto file = openLog(suffix);
        if (!file && (file.errorNumber() == error::FileNotFound || file.errorNumber() == error::PathNotFound))
            continue;
        Result<ZeroedBytes> bytes
            = file ? contentOf(**file, std::min((*file)->size(), largestHive)) : file.failure();
        logs.push_back({suffix.sliced(1).toString(), bytes ? *std::move(bytes) : ZeroedBytes(1)});
    }
    return logs;
}

Result<regf::Hive> parse(const Result<ZeroedBytes>& bytes)
{
    return bytes ? regf::Hive::parse(*bytes) : Result<regf::Hive>(bytes.failure());
}

} // namespace

Result<regf::Hive> readHive(QFile& file, const OpenHiveLog& openLog, std::optional<regf::Recovery>& recovery)
{
    const QByteArray head = file.peek(regf::Recovery::HeadSize);
    if (!regf::Recovery::isNeeded(head)) {
        const auto stated = qFromLittleEndian<quint32>(head.constData() + regf::base::DataLength);
        return parse(contentOf(file, qint64(regf::base::Size) + stated));
    }
    const std::vector<HiveLog> logs = readLogs(openLog);
    std::vector<regf::Recovery::NamedLog> named;
    named.reserve(logs.size());
    for (const HiveLog& log : logs)
        named.push_back({log.name, {log.bytes.data(), qsizetype(log.bytes.size())}});
    recovery.emplace(head, named);
    // Without a base block nothing says how long the hive is, and nothing to find its keys by.
    const auto size = qint64(recovery->size());
    if (size == 0)
        return regf::Hive::parse(head);
    const Result<ZeroedBytes> bytes = contentOf(file, size, recovery->isRecovered());
    if (bytes)
        recovery->apply(bytes->span());
    return parse(bytes);
}

} // namespace quoril
