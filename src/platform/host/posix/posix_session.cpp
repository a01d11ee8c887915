#include "platform/host/posix/posix_session.h"

#include "platform/host/host_session.h"
#include "platform/host/posix/language_names.h"
#include "platform/host/posix/lock_keys.h"
#include "platform/host/posix/workstation_lock.h"
#include "platform/host/posix/x11_windows.h"

namespace quoril {

PosixSession::PosixSession() : m_channel(BroadcastChannel::userFolder()) { }

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
    return m_channel.subscribe(message, std::move(handler));
}

void PosixSession::broadcast(QStringView message, HungWindows)
{
    m_channel.broadcast(message);
}

LockKeys PosixSession::lockKeys() const
{
    return hostLockKeys();
}

Status PosixSession::lockWorkstation()
{
    return lockWorkstationOverBus();
}

std::unique_ptr<Session> openHostSession()
{
    return std::make_unique<PosixSession>();
}

} // namespace quoril
