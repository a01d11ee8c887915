#include "platform/host/host_system.h"

#include "platform/host/posix/host_error.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <pwd.h>
#include <unistd.h>

namespace quoril {

QString hostUserName()
{
    const passwd* user = ::getpwuid(::getuid());
    const QString name = user ? QString::fromLocal8Bit(user->pw_name) : QString::number(::getuid());
    std::array<char, 256> host = {};
    ::gethostname(host.data(), host.size() - 1);
    return QString::fromLocal8Bit(host.data()) + u'\\' + name;
}

void reportFileSizeLimits()
{
    std::signal(SIGXFSZ, SIG_IGN);
}

quint64 hostTickCount()
{
    timespec time = {};
    ::clock_gettime(CLOCK_BOOTTIME, &time);
    constexpr quint64 perSecond = 1000;
    constexpr quint64 nanosecondsEach = 1'000'000;
    return quint64(time.tv_sec) * perSecond + quint64(time.tv_nsec) / nanosecondsEach;
}

Result<quint64> hostMemory()
{
    const long pages = ::sysconf(_SC_PHYS_PAGES);
    const long pageSize = ::sysconf(_SC_PAGESIZE);
    if (pages < 0 || pageSize < 0)
        return hostError(errno);
    return quint64(pages) * quint64(pageSize);
}

} // namespace quoril
