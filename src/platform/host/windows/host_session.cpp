#include "platform/host/host_session.h"

#include "platform/windows/windows_session.h"

namespace quoril {

namespace {

/// The session of the host with messages of the tree's own.
class TreeSession : public WindowsSession
{
public:
    explicit TreeSession(QString folder) : m_folder(std::move(folder)) { }
    std::unique_ptr<MessageSubscription> subscribe(
        QStringView message, std::function<void()> handler) override
    {
        return WindowsSession::subscribe(treeMessage(message, m_folder), std::move(handler));
    }
    void broadcast(QStringView message, HungWindows hung) override
    {
        WindowsSession::broadcast(treeMessage(message, m_folder), hung);
    }

private:
    QString m_folder;
};

} // namespace

std::unique_ptr<Session> openHostSession(const QString& treeFolder, WorkstationLock)
{
    return std::make_unique<TreeSession>(treeFolder);
}

} // namespace quoril
