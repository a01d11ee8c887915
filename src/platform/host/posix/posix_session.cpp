#include "platform/host/posix/posix_session.h"

#include "platform/host/posix/language_names.h"
#include "platform/host/posix/lock_keys.h"
#include "platform/host/posix/x11_windows.h"

#include <system_error>

namespace quoril {

PosixSession::PosixSession(QString treeFolder, WorkstationLock lock)
    : m_treeFolder(std::move(treeFolder))
    , m_channel(BroadcastChannel::userFolder())
    , m_lock(lock)
{
}

QString PosixSession::abbreviatedLanguageName(Locale locale) const
{
    return windowsLanguageName(hostLocaleName(locale));
}

std::unique_ptr<ForeignWindow> PosixSession::findWindow(QStringView title)
{
    return findX11Window(title);
}

std::unique_ptr<MessageSubscription> PosixSession::subscribe(
    QStringView message, std::function<void()> handler)
{
    return m_channel.subscribe(treeMessage(message, m_treeFolder), std::move(handler));
}

void PosixSession::broadcast(QStringView message, HungWindows)
{
    m_channel.broadcast(treeMessage(message, m_treeFolder));
}

LockKeys PosixSession::lockKeys() const
{
    return hostLockKeys();
}

Status PosixSession::lockWorkstation()
{
    if (!m_lock)
        return Error{error::CallNotImplemented, {}};
    if (m_isLocking.exchange(true))
        return {};
    try {
        m_locking = std::jthread([this](const std::stop_token& stop) {
            static_cast<void>(m_lock(stop));
            m_isLocking = false;
        });
    } catch (const std::system_error&) {
        m_isLocking = false;
        return Error{error::NotEnoughMemory, {}};
    }
    return {};
}

std::unique_ptr<Session> openHostSession(const QString& treeFolder, WorkstationLock lock)
{
    return std::make_unique<PosixSession>(treeFolder, lock);
}

} // namespace quoril
