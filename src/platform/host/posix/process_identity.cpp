#include "platform/host/process_identity.h"

#include <QFile>
#include <QList>

#include <array>
#include <csignal>
#include <sys/syscall.h>
#include <unistd.h>

namespace quoril {

namespace {

QByteArray contentOf(const QByteArray& path)
{
    QFile file(QFile::decodeName(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray imageOf(const QByteArray& folder)
{
    std::array<char, 4096> target;
    const ssize_t size = ::readlink((folder + "/exe").constData(), target.data(), target.size());
    QByteArray image = size > 0 ? QByteArray(target.data(), size) : QByteArray();
    // A program whose file was replaced by a newer one is still that program.
    constexpr QByteArrayView replaced = " (deleted)";
    if (image.endsWith(replaced))
        image.chop(replaced.size());
    return image;
}

} // namespace

std::optional<ProcessIdentity> ProcessIdentity::of(int pid)
{
    if (pid <= 0)
        return std::nullopt;
    const QByteArray folder = "/proc/" + QByteArray::number(pid);
    const QByteArray stat = contentOf(folder + "/stat");
    // The name in the second field may hold anything, parentheses and blanks included; the state follows it.
    const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
    constexpr qsizetype threadsField = 20 - 3;
    constexpr qsizetype startTimeField = 22 - 3;
    if (fields.size() <= startTimeField)
        return std::nullopt;
    // The first thread may be gone while others go on.
    const bool hasEnded = (fields[0] == "Z" && fields[threadsField].toInt() <= 1) || fields[0] == "X";
    if (hasEnded)
        return std::nullopt;
    ProcessIdentity identity;
    identity.pid = pid;
    identity.startTicks = fields[startTimeField].toULongLong();
    identity.boot = contentOf("/proc/sys/kernel/random/boot_id").trimmed();
    identity.image = imageOf(folder);
    return identity;
}

bool ProcessIdentity::isAlive() const
{
    auto now = of(pid);
    // A process that is ending has lost its program before it lets go of its files and locks; one that was
    // recorded before it ran its program has none yet.
    if (now && (now->image.isEmpty() || image.isEmpty()))
        now->image = image;
    return now == *this;
}

bool ProcessIdentity::signal(int number) const
{
    // The handle is of one process for ever: once it is open, what is found to be alive is what gets the
    // signal.
    const auto handle = static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
    if (handle < 0)
        return isAlive() && ::kill(pid, number) == 0;
    const bool sent = isAlive() && ::syscall(SYS_pidfd_send_signal, handle, number, nullptr, 0) == 0;
    ::close(handle);
    return sent;
}

} // namespace quoril
