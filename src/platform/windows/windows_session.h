#pragma once

#include "platform/session.h"

namespace quoril {

/// The session that the program runs in. What a service broadcasts stays in its own.
class WindowsSession : public Session
{
public:
    QString abbreviatedLanguageName(Locale locale) const override;
    std::unique_ptr<ForeignWindow> findWindow(QStringView title) override;
    std::unique_ptr<MessageSubscription> subscribe(
        QStringView message, std::function<void()> handler) override;
    void broadcast(QStringView message, HungWindows hung) override;
    LockKeys lockKeys() const override;
    Status lockWorkstation() override;
};

} // namespace quoril
