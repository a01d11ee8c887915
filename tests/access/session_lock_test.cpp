#include "access/idle_lock.h"
#include "platform/tree/posix/tree_session.h"
#include "support/fake_machine.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryFile>
#include <QThread>

#include <gtest/gtest.h>

namespace quoril::test {

using namespace Qt::StringLiterals;

namespace {

/// A login manager that counts: "INTERFACE.MEMBER" of each call at the object of the caller's own session.
class LoginManager : public QDBusVirtualObject
{
public:
    QStringList calls;
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override
    {
        calls.append(message.interface() + u'.' + message.member());
        return bus.send(message.createReply());
    }
};

struct MachineWithSession : FakeMachine
{
    TreeSession treeSession;
    Session& session() override { return treeSession; }
};

} // namespace

TEST(SessionLock, AsksTheLoginManagerOncePerExpiry)
{
    const QString daemon = QStandardPaths::findExecutable(u"dbus-daemon"_s);
    if (daemon.isEmpty())
        GTEST_SKIP() << "no dbus-daemon";
    int argc = 0;
    const QCoreApplication application(argc, nullptr);
    QTemporaryFile config;
    ASSERT_TRUE(config.open());
    config.write(
        "<busconfig><type>system</type><listen>unix:tmpdir=/tmp</listen><policy context='default'>"
        "<allow send_destination='*'/><allow receive_sender='*'/><allow own='*'/></policy></busconfig>");
    config.close();
    QProcess bus;
    bus.start(daemon, {u"--config-file="_s + config.fileName(), u"--nofork"_s, u"--print-address"_s});
    ASSERT_TRUE(bus.waitForReadyRead(10'000));
    const QByteArray address = bus.readLine().trimmed();
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", address);
    qunsetenv("XDG_SESSION_ID");

    LoginManager manager;
    QThread thread;
    manager.moveToThread(&thread);
    thread.start();
    bool registered = false;
    QMetaObject::invokeMethod(
        &manager,
        [&] {
            QDBusConnection own = QDBusConnection::connectToBus(QString::fromLatin1(address), u"manager"_s);
            registered = own.registerVirtualObject(u"/org/freedesktop/login1/session/auto"_s, &manager)
                && own.registerService(u"org.freedesktop.login1"_s);
        },
        Qt::BlockingQueuedConnection);
    EXPECT_TRUE(registered);

    MachineWithSession machine;
    const ScopedMachine inForce(machine);
    IdleLock lock({[](quint32 id, quint32) { return id; }, [](quint32) {}, [] { return 10'000U; },
        LockWorkstationIfSupported});
    lock.ArmIdleTimer();
    for (int expiry = 0; expiry < 3; ++expiry) {
        for (const quint32 id : {IdleLock::IdleTimerId, IdleLock::IdleTimerId, IdleLock::LockTimerId})
            lock.OnTimer(id);
    }
    QMetaObject::invokeMethod(
        &manager, [] { QDBusConnection::disconnectFromBus(u"manager"_s); }, Qt::BlockingQueuedConnection);
    thread.quit();
    thread.wait();
    EXPECT_EQ(manager.calls, QStringList(3, u"org.freedesktop.login1.Session.Lock"_s));
    bus.terminate();
    bus.waitForFinished();
}

} // namespace quoril::test
