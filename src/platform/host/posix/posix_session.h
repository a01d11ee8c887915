#pragma once

#include "platform/host/host_session.h"
#include "platform/host/posix/broadcast_channel.h"
#include "platform/session.h"

#include <atomic>
#include <thread>

namespace quoril {

/// The session of the person on the host, whose machine is the tree.
class PosixSession : public Session
{
public:
    PosixSession(QString treeFolder, WorkstationLock lock);

    QString abbreviatedLanguageName(Locale locale) const override;
    std::unique_ptr<ForeignWindow> findWindow(QStringView title) override;
    std::unique_ptr<MessageSubscription> subscribe(
        QStringView message, std::function<void()> handler) override;
    void broadcast(QStringView message, HungWindows hung) override;
    LockKeys lockKeys() const override;
    Status lockWorkstation() override;

private:
    QString m_treeFolder;
    BroadcastChannel m_channel;
    WorkstationLock m_lock; ///< may be null
    std::atomic<bool> m_isLocking = false;
    std::jthread m_locking; ///< ends soon when it is to end
};

} // namespace quoril
