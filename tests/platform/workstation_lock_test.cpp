#include "platform/host/posix/workstation_lock.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QMap>
#include <QProcess>
#include <QStandardPaths>

#include <csignal>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace quoril::test {

using namespace std::chrono_literals;

namespace {

/// The calls that a program takes, each with its answer; invalid for one without arguments.
using Answers = QMap<QString, QVariant>;

/// Answers those calls, and an error to all others.
class Answerer : public QDBusVirtualObject
{
public:
    explicit Answerer(Answers answers) : m_answers(std::move(answers)) { }
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override
    {
        QString call = message.path() + u' ' + message.interface() + u'.' + message.member();
        if (!message.arguments().isEmpty())
            call += u' ' + message.arguments().first().toString();
        const auto answer = m_answers.constFind(call);
        if (answer == m_answers.cend())
            return false;
        return bus.send(answer->isValid() ? message.createReply(*answer) : message.createReply());
    }

private:
    Answers m_answers;
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
        endServices();
        m_daemon.kill();
        m_daemon.waitForFinished();
    }

    void endServices()
    {
        for (const pid_t pid : std::exchange(m_services, {})) {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, nullptr, 0);
        }
    }

    /// A program on the bus that owns the name and takes those calls.
    void serve(const QString& name, const Answers& answers)
    {
        int ready[2] = {};
        ASSERT_EQ(::pipe(ready), 0);
        const pid_t pid = ::fork();
        if (pid == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            int argc = 0;
            QCoreApplication application(argc, nullptr);
            QDBusConnection bus = QDBusConnection::connectToBus(QString::fromUtf8(m_address), u"fake"_s);
            Answerer answerer(answers);
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
        ::close(ready[0]);
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
            ::_exit(
                static_cast<int>(lockWorkstationOverBus({.stop = {}, .betweenLooks = 1ms}).errorNumber()));
        }
        int status = 0;
        ::waitpid(pid, &status, 0);
        return WEXITSTATUS(status);
    }

    QProcess m_daemon;
    QByteArray m_address;
    std::vector<pid_t> m_services;
};

TEST_F(WorkstationLockTest, BelievesWhoeverSaysThatTheScreenIsLocked)
{
    const QString saver = u"org.freedesktop.ScreenSaver"_s;
    const QString login = u"org.freedesktop.login1"_s;
    const auto hint = [](const QString& session, bool locked) {
        return Answers{{session + u" org.freedesktop.login1.Session.Lock"_s, {}},
            {session + u" org.freedesktop.DBus.Properties.Get org.freedesktop.login1.Session"_s,
                QVariant::fromValue(QDBusVariant(locked))}};
    };
    const QString automatic = u"/org/freedesktop/login1/session/auto"_s;
    Answers second = hint(u"/s/c2"_s, true);
    second.insert(u"/org/freedesktop/login1 org.freedesktop.login1.Manager.GetSession c2"_s,
        QVariant::fromValue(QDBusObjectPath(u"/s/c2"_s)));
    const Answers screen{{u"/ScreenSaver org.freedesktop.ScreenSaver.Lock"_s, {}},
        {u"/ScreenSaver org.freedesktop.ScreenSaver.GetActive"_s, true}};
    const Answers deaf{{u"/ScreenSaver org.freedesktop.ScreenSaver.Lock"_s, {}}};
    const struct
    {
        const char* what;
        const char* session;
        Answers login, saver;
        int result;
    } cases[] = {
        {"nobody", "", {}, {}, 120},
        {"screen saver", "", {}, screen, 0},
        {"screen saver that doesn't say so", "", {}, deaf, 120},
        {"session by its number", "c2", second, {}, 0},
        {"session that is not there", "c3", second, {}, 120},
        {"session of its own", "", hint(automatic, true), {}, 0},
        {"nobody heeds the login manager", "", hint(automatic, false), {}, 120},
        {"but the screen saver does", "", hint(automatic, false), screen, 0},
    };
    for (const auto& [what, session, loginAnswers, saverAnswers, result] : cases) {
        if (!loginAnswers.isEmpty())
            serve(login, loginAnswers);
        if (!saverAnswers.isEmpty())
            serve(saver, saverAnswers);
        EXPECT_EQ(lock(session), result) << what;
        endServices();
    }
}

} // namespace

} // namespace quoril::test
