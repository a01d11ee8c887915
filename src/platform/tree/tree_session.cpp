#include "platform/tree/tree_session.h"

#include "platform/tree/language_names.h"
#include "platform/tree/lock_keys.h"
#include "platform/tree/workstation_lock.h"
#include "platform/tree/x11_windows.h"

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

} // namespace quoril
