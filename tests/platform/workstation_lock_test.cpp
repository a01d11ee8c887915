#include "platform/host/posix/posix_session.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QProcess>
#include <QStandardPaths>
#include <gtest/gtest.h>

#include <csignal>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quoril::test {

using namespace Qt::StringLiterals;

namespace {

/// Answers the one call, and an error to all others; each that it takes is a byte in the pipe.
class Answerer : public QDBusVirtualObject
{
public:
    Answerer(QString call, int taken) : m_call(std::move(call)), m_taken(taken) { }
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override
    {
        QString call = message.path() + u' ' + message.interface() + u'.' + message.member();
        if (!message.arguments().isEmpty())
            call += u' ' + message.arguments().first().toString();
        return call == m_call && ::write(m_taken, "", 1) == 1 && bus.send(message.createReply());
    }

private:
    QString m_call;
    int m_taken;
};

class WorkstationLockTest : public testing::Test
{
protected:
    void SetUp() override
    {
        if (QStandardPaths::findExecutable(u"dbus-daemon"_s).isEmpty())
            GTEST_SKIP() << "no dbus-daemon";
        m_daemon.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--print-address=1"_s});
        ASSERT_TRUE(m_daemon.waitForReadyRead(10000));
        m_address = m_daemon.readLine().trimmed();
    }
    void TearDown() override
    {
        for (const pid_t pid : m_services) {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, nullptr, 0);
        }
        ::close(m_calls);
        m_daemon.kill();
        m_daemon.waitForFinished();
    }

    /// A program on the bus that owns the name and takes that one call.
    void serve(const QString& name, const QString& call)
    {
        int ready[2] = {};
        ASSERT_EQ(::pipe(ready), 0);
        const pid_t pid = ::fork();
        if (pid == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            int argc = 0;
            QCoreApplication application(argc, nullptr);
            QDBusConnection bus = QDBusConnection::connectToBus(QString::fromUtf8(m_address), u"fake"_s);
            Answerer answerer(call, ready[1]);
            const bool serves = bus.registerVirtualObject(u"/"_s, &answerer, QDBusConnection::SubPath)
                && bus.registerService(name);
            if (serves && ::write(ready[1], "", 1) == 1)
                QCoreApplication::exec();
            ::_exit(1);
        }
        m_services.push_back(pid);
        ::close(ready[1]);
        char byte = 0;
        EXPECT_EQ(::read(ready[0], &byte, 1), 1);
        m_calls = ready[0];
    }
    /// How many calls the program has taken.
    int taken() const
    {
        int bytes = 0;
        ::ioctl(m_calls, FIONREAD, &bytes);
        return bytes;
    }

    /// The error number of a lock by a program of its own: connections are kept for a process's whole life.
    int lock(const char* session = "") const
    {
        const pid_t pid = ::fork();
        if (pid == 0) {
            int argc = 0;
            const QCoreApplication application(argc, nullptr);
            qputenv("DBUS_SYSTEM_BUS_ADDRESS", m_address);
            qputenv("DBUS_SESSION_BUS_ADDRESS", m_address);
            qputenv("XDG_SESSION_ID", session);
            ::_exit(static_cast<int>(PosixSession().lockWorkstation().errorNumber()));
        }
        int status = 0;
        ::waitpid(pid, &status, 0);
        return WEXITSTATUS(status);
    }

    QProcess m_daemon;
    QByteArray m_address;
    std::vector<pid_t> m_services;
    int m_calls = -1;
};

TEST_F(WorkstationLockTest, asksWhoeverAnswers)
{
    EXPECT_EQ(lock(), 120);
    serve(u"org.freedesktop.ScreenSaver"_s, u"/ScreenSaver org.freedesktop.ScreenSaver.Lock"_s);
    EXPECT_EQ(lock(), 0);
}

TEST_F(WorkstationLockTest, asksTheLoginManagerForTheSession)
{
    serve(u"org.freedesktop.login1"_s,
        u"/org/freedesktop/login1 org.freedesktop.login1.Manager.LockSession c2"_s);
    EXPECT_EQ(lock("c2"), 0);
    EXPECT_EQ(taken(), 1);
    EXPECT_EQ(lock("c3"), 120);
    EXPECT_EQ(lock(), 120);
}

TEST_F(WorkstationLockTest, asksTheLoginManagerForItsOwnSessionWithoutANumber)
{
    serve(u"org.freedesktop.login1"_s,
        u"/org/freedesktop/login1/session/auto org.freedesktop.login1.Session.Lock"_s);
    EXPECT_EQ(lock(), 0);
    EXPECT_EQ(taken(), 1);
}

} // namespace

} // namespace quoril::test
