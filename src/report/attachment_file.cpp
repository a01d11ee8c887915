#include "report/attachment_file.h"

#include "platform/files.h"
#include "platform/host/host_file.h"

#include <QFileInfo>

namespace quoril {

namespace {

constexpr std::size_t PendingUnits = std::size_t{64} * 1024;
// Units go out as the machine holds them.
static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN);

} // namespace

bool writeUnits(QIODevice& out, QStringView text)
{
    const qint64 bytes = qint64(text.size()) * 2;
    return out.write(reinterpret_cast<const char*>(text.utf16()), bytes) == bytes;
}

Status AttachmentFile::create(const QString& hostPath)
{
    m_file.setFileName(hostPath);
    m_failed = !m_file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered,
        QFile::ReadOwner | QFile::WriteOwner);
    if (m_failed)
        return Error{failureNumber(hostPath), hostPath};
    m_pending.reserve(PendingUnits);
    return {};
}

void AttachmentFile::write(QStringView text)
{
    if (m_pending.size() + std::size_t(text.size()) > PendingUnits)
        flush();
    if (std::size_t(text.size()) > PendingUnits)
        m_failed = m_failed || !writeUnits(m_file, text);
    else
        m_pending.insert(m_pending.end(), text.utf16(), text.utf16() + text.size());
}

bool AttachmentFile::writeAll(QIODevice& device)
{
    flush();
    const qint64 bytes = bytesToRead(device);
    // A program that goes on writing to the file doesn't lengthen what is copied.
    auto* const file = qobject_cast<QFileDevice*>(&device);
    const bool isKnown = file && !m_failed && bytes < std::numeric_limits<qint64>::max();
    const qint64 copied = isKnown ? copyWithinHost(*file, m_file, bytes / 2 * 2) : 0;
    return (isKnown && copied == bytes / 2 * 2) || ReportStream::writeAll(device);
}

void AttachmentFile::flush()
{
    m_failed = m_failed || !writeUnits(m_file, QStringView(m_pending.data(), qsizetype(m_pending.size())));
    m_pending.clear();
}

Status AttachmentFile::close()
{
    flush();
    m_file.close();
    if (!m_failed && m_file.error() == QFileDevice::NoError)
        return {};
    const bool isFull = m_file.error() == QFileDevice::ResourceError;
    return Error{isFull ? error::DiskFull : error::WriteFault, m_file.fileName()};
}

quint32 AttachmentFile::failureNumber(const QString& hostPath) const
{
    const QFileInfo file(hostPath);
    if (file.exists() || file.isSymLink())
        return error::FileExists;
    if (!QFileInfo(file.path()).isDir())
        return error::PathNotFound;
    return m_file.error() == QFileDevice::ResourceError ? error::DiskFull : error::AccessDenied;
}

} // namespace quoril
