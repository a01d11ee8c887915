#include "platform/tree/posix/tree_session.h"

#include "platform/tree/posix/language_names.h"
#include "platform/tree/posix/lock_keys.h"
#include "platform/tree/posix/workstation_lock.h"
#include "platform/tree/posix/x11_windows.h"
#include "platform/tree/tree_machine.h"

namespace quoril {

TreeSession::TreeSession() : m_channel(BroadcastChannel::userFolder()) { }

QString TreeSession::abbreviatedLanguageName(Locale locale) const
{
    return windowsLanguageName(hostLocaleName(locale));
}

std::unique_ptr<ForeignWindow> TreeSession::findWindow(QStringView title)
{
    return findX11Window(title);
}

std::unique_ptr<MessageSubscription> TreeSession::subscribe(
    QStringView message, std::function<void()> handler)
{
    return m_channel.subscribe(message, std::move(handler));
}

void TreeSession::broadcast(QStringView message)
{
    m_channel.broadcast(message);
}

LockKeys TreeSession::lockKeys() const
{
    return hostLockKeys();
}

Status TreeSession::lockWorkstation()
{
    return lockWorkstationOverBus();
}

std::unique_ptr<Session> openHostSession()
{
    return std::make_unique<TreeSession>();
}

} // namespace quoril
