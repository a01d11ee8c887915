#pragma once

#include "platform/host/posix/broadcast_channel.h"
#include "platform/session.h"

namespace quoril {

/// The session of the person on the host, whose machine is the tree.
class PosixSession : public Session
{
public:
    PosixSession();

    QString abbreviatedLanguageName(Locale locale) const override;
    std::unique_ptr<ForeignWindow> findWindow(QStringView title) override;
    std::unique_ptr<MessageSubscription> subscribe(
        QStringView message, std::function<void()> handler) override;
    void broadcast(QStringView message, HungWindows hung) override;
    LockKeys lockKeys() const override;
    Status lockWorkstation() override;

private:
    BroadcastChannel m_channel;
};

} // namespace quoril
