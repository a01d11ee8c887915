#pragma once

#include "platform/session.h"
#include "platform/tree/posix/broadcast_channel.h"

namespace quoril {

/// The session of the person on the host, whose machine is the tree.
class TreeSession : public Session
{
public:
    TreeSession();

    QString abbreviatedLanguageName(Locale locale) const override;
    std::unique_ptr<ForeignWindow> findWindow(QStringView title) override;
    std::unique_ptr<MessageSubscription> subscribe(
        QStringView message, std::function<void()> handler) override;
    void broadcast(QStringView message) override;
    LockKeys lockKeys() const override;
    Status lockWorkstation() override;

private:
    BroadcastChannel m_channel;
};

} // namespace quoril
