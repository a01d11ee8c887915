#pragma once

#include "platform/session.h"

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <functional>
#include <memory>

namespace quoril {

/// Named messages between the programs of one user, over datagram sockets in a folder that is the user's
/// alone. Each program that listens has a socket there; a message is sent to all of them. What a program
/// that ended left behind is removed by the next sender.
class BroadcastChannel
{
public:
    /// The folder is made when it is needed; without one that is the user's alone nothing is sent or heard
    /// outside this process.
    explicit BroadcastChannel(QString folder);
    ~BroadcastChannel();
    BroadcastChannel(const BroadcastChannel&) = delete;
    BroadcastChannel& operator=(const BroadcastChannel&) = delete;

    /// See Session. A subscription may outlive the channel.
    std::unique_ptr<MessageSubscription> subscribe(QStringView message, std::function<void()> handler);
    void broadcast(QStringView message);

    /// $XDG_RUNTIME_DIR/quoril, or a folder of the user's in the folder for temporary files.
    static QString userFolder();

private:
    class Handlers;
    class Listener;

    bool folderIsSafe() const;

    QString m_folder;
    std::shared_ptr<Handlers> m_handlers;
    std::unique_ptr<Listener> m_listener;
};

} // namespace quoril
