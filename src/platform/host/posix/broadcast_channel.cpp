#include "platform/host/posix/broadcast_channel.h"

#include "platform/terminal.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSocketNotifier>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <map>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t longestMessage = 1024;

/// The socket address of a path; no length where the path is too long for one.
struct Address
{
    explicit Address(const QString& path)
    {
        const QByteArray bytes = QFile::encodeName(path);
        const auto size = static_cast<std::size_t>(bytes.size());
        if (size >= sizeof(address.sun_path))
            return;
        address.sun_family = AF_UNIX;
        std::memcpy(static_cast<char*>(address.sun_path), bytes.constData(), size);
        length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + size + 1);
    }
    const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&address); }

    sockaddr_un address = {};
    socklen_t length = 0;
};

class Socket
{
public:
    Socket() : m_descriptor(::socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) { }
    ~Socket()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    int get() const { return m_descriptor; }

private:
    int m_descriptor;
};

} // namespace

/// The handlers of this process, by message.
class BroadcastChannel::Handlers
{
public:
    int add(QStringView message, std::function<void()> handler)
    {
        m_entries.emplace(m_next, Entry{message.toString(), std::move(handler)});
        return m_next++;
    }

    void remove(int number) { m_entries.erase(number); }

    /// Handlers may come and go meanwhile: those that are gone aren't called.
    void run(QStringView message)
    {
        std::vector<int> numbers;
        for (const auto& [number, entry] : m_entries) {
            if (entry.message == message)
                numbers.push_back(number);
        }
        for (const int number : numbers) {
            const auto found = m_entries.find(number);
            if (found == m_entries.end())
                continue;
            const std::function<void()> handler = found->second.handler;
            handler();
        }
    }

private:
    struct Entry
    {
        QString message;
        std::function<void()> handler;
    };
    std::map<int, Entry> m_entries;
    int m_next = 0;
};

/// This process's socket in the folder.
class BroadcastChannel::Listener
{
public:
    Listener(const QString& folder, std::shared_ptr<Handlers> handlers) : m_handlers(std::move(handlers))
    {
        static std::atomic<int> count = 0;
        const QString name = u"%1-%2"_s.arg(::getpid()).arg(count++);
        const QString early = folder + u"/."_s + name;
        const Address address(early);
        ::unlink(QFile::encodeName(early).constData());
        if (address.length == 0 || m_socket.get() < 0
            || ::bind(m_socket.get(), address.get(), address.length) != 0)
            return;
        // Under its last name only once it hears: a sender removes what refuses its message.
        const QString path = folder + u'/' + name;
        if (::rename(QFile::encodeName(early).constData(), QFile::encodeName(path).constData()) != 0)
            return;
        m_path = path;
        if (!QCoreApplication::instance())
            return;
        m_notifier = std::make_unique<QSocketNotifier>(m_socket.get(), QSocketNotifier::Read);
        QObject::connect(
            m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this] { receive(); });
    }
    ~Listener()
    {
        if (!m_path.isEmpty())
            ::unlink(QFile::encodeName(m_path).constData());
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    const QString& path() const { return m_path; }

private:
    void receive()
    {
        // A handler may end this listener, or wait in an event loop of its own that comes here again.
        const std::shared_ptr<Handlers> handlers = m_handlers;
        std::array<char, longestMessage> buffer = {};
        const ssize_t size = ::recv(m_socket.get(), buffer.data(), buffer.size(), 0);
        if (size > 0)
            handlers->run(QString::fromUtf8(buffer.data(), size));
    }

    std::shared_ptr<Handlers> m_handlers;
    Socket m_socket;
    QString m_path;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

namespace {

template <typename Owner> class Subscription : public MessageSubscription
{
public:
    Subscription(std::weak_ptr<Owner> owner, int number) : m_owner(std::move(owner)), m_number(number) { }
    ~Subscription() override
    {
        if (const auto owner = m_owner.lock())
            owner->remove(m_number);
    }
    Subscription(const Subscription&) = delete;
    Subscription& operator=(const Subscription&) = delete;

private:
    std::weak_ptr<Owner> m_owner;
    int m_number;
};

} // namespace

BroadcastChannel::BroadcastChannel(QString folder)
    : m_folder(std::move(folder))
    , m_handlers(std::make_shared<Handlers>())
{
}

BroadcastChannel::~BroadcastChannel() = default;

QString BroadcastChannel::userFolder()
{
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (QDir::isAbsolutePath(runtime) && QDir(runtime).exists())
        return runtime + u"/quoril"_s;
    return QDir::tempPath() + u"/quoril-%1"_s.arg(::getuid());
}

bool BroadcastChannel::folderIsSafe() const
{
    const QByteArray path = QFile::encodeName(m_folder);
    ::mkdir(path.constData(), S_IRWXU);
    struct stat status = {};
    const bool isSafe = ::lstat(path.constData(), &status) == 0 && S_ISDIR(status.st_mode)
        && status.st_uid == ::getuid() && (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
    if (!isSafe)
        sayOnce(m_folder + u": no folder of this user alone; no program hears of what another one changes"_s);
    return isSafe;
}

std::unique_ptr<MessageSubscription> BroadcastChannel::subscribe(
    QStringView message, std::function<void()> handler)
{
    if (!m_listener && folderIsSafe())
        m_listener = std::make_unique<Listener>(m_folder, m_handlers);
    return std::make_unique<Subscription<Handlers>>(m_handlers, m_handlers->add(message, std::move(handler)));
}

void BroadcastChannel::broadcast(QStringView message)
{
    const QString own = m_listener ? m_listener->path() : QString();
    if (folderIsSafe()) {
        const Socket socket;
        const QByteArray bytes = message.toUtf8().left(longestMessage);
        const QStringList names = QDir(m_folder).entryList(QDir::System | QDir::Files);
        for (const QString& name : names) {
            const QString path = m_folder + u'/' + name;
            const Address address(path);
            if (path == own || address.length == 0)
                continue;
            const auto size = static_cast<std::size_t>(bytes.size());
            const ssize_t sent = ::sendto(
                socket.get(), bytes.constData(), size, MSG_NOSIGNAL, address.get(), address.length);
            if (sent < 0 && errno == ECONNREFUSED)
                ::unlink(QFile::encodeName(path).constData());
        }
    }
    const std::shared_ptr<Handlers> handlers = m_handlers;
    handlers->run(message);
}

} // namespace quoril
