#include "support/service_tree.h"
#include "support/utf16.h"

#include <QDir>
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

namespace quoril::test {

namespace {

using namespace service_state;

class TreeServiceTest : public testing::Test
{
protected:
    /// The insert strings of the entries of a log, the strings of one joined.
    QStringList events(QStringView log)
    {
        QStringList texts;
        const auto opened = tree.machine.eventLogs().open(log, {});
        EventEntry entry;
        while (opened && (*opened)->next(entry))
            texts.append(entry.sourceName + u": "_s + entry.insertStrings.toList().join(u' '));
        return texts;
    }

    static qsizetype descriptors()
    {
        return QDir(u"/proc/self/fd"_s).entryList(QDir::System | QDir::Files).size();
    }

    ServiceTree tree;
};

TEST_F(TreeServiceTest, isTheSameToEveryConsoleAndTellsTheLogs)
{
    tree.add(u"CERES"_s, u"--start-delay 600 --stop-delay 600"_s);
    const auto service = *tree.open(u"ceres"_s);
    ASSERT_EQ(service->start().errorNumber(), 0u);
    EXPECT_EQ(service->control(ServiceControlStop).errorNumber(), error::ServiceCannotAcceptControl);
    ASSERT_TRUE(tree.comesTo(*service, Running));

    // Another console sees the same, and what it stops is stopped here.
    TreeMachine other(tree.root());
    const auto elsewhere = *(*other.services().openManager(service_access::ManagerGenericAll))
                                ->openService(u"CERES", AllServiceRights);
    EXPECT_EQ(elsewhere->queryStatus()->currentState, Running);
    EXPECT_EQ(elsewhere->start().errorNumber(), error::ServiceAlreadyRunning);
    const auto asked = elsewhere->control(ServiceControlStop);
    ASSERT_TRUE(asked);
    EXPECT_EQ(asked->currentState, StopPending);
    EXPECT_EQ(service->queryStatus()->currentState, StopPending);
    EXPECT_EQ(service->control(ServiceControlStop).errorNumber(), error::ServiceCannotAcceptControl);
    EXPECT_TRUE(tree.comesTo(*service, Stopped));
    EXPECT_EQ(service->queryStatus()->win32ExitCode, 0u);

    EXPECT_EQ(events(u"System"),
        QStringList({u"Service Control Manager: CERES instance running"_s,
            u"Service Control Manager: CERES instance stopped"_s}));
    const QStringList told = events(u"Application");
    ASSERT_EQ(told.size(), 1);
    const QString event = told.first().mid(QStringView(u"QUORIL Emulator: ").size());
    EXPECT_EQ(event.mid(15, 17), u":INFO :  00000249");
    EXPECT_EQ(event.mid(52), u"Session started: CERES");
    const QString text = textOf(tree.read(u"Emulators/CERES.log"_s));
    EXPECT_EQ(text.section(u"\r\n"_s, 0, 0).mid(15),
        u":INFO :  00000249                    Start of session: CERES");
    EXPECT_EQ(text.count(u"\r\n"_s), 4);
    EXPECT_TRUE(text.endsWith(u"\r\n"_s));
}

TEST_F(TreeServiceTest, tellsWhyAServiceDoesNotStart)
{
    tree.add(u"MARKED"_s);
    tree.write(u"data.exe"_s, "MZ");
    tree.program(u"runs.exe"_s, "");
    tree.write(u"runs.exe"_s, "MZ");
    struct Case
    {
        const char* name;
        QString path;
        quint32 number;
    };
    const Case cases[] = {
        {"NOFILE", u"C:\\nothing.exe"_s, error::FileNotFound},
        {"NOFOLDER", u"\"C:\\no folder\\x.exe\" -a"_s, error::PathNotFound},
        {"OTHERSYSTEM", u"C:\\runs.exe"_s, error::BadExeFormat},
        {"NOPROGRAM", u"\\??\\C:\\data.exe"_s, error::BadExeFormat},
        {"RELATIVE", u"System32\\drivers\\x.sys"_s, error::PathNotFound},
        {"OUTSIDE", u"C:\\..\\..\\bin\\sh"_s, error::PathNotFound},
    };
    for (const Case& each : cases) {
        const QString name = QString::fromLatin1(each.name);
        tree.add(name, each.path, ServiceTree::Path::Whole);
        EXPECT_EQ((*tree.open(name))->start().errorNumber(), each.number) << each.name;
    }
    const auto marked = *tree.open(u"MARKED"_s);
    ASSERT_TRUE(marked->markForDelete());
    EXPECT_EQ((*tree.open(u"MARKED"_s))->start().errorNumber(), error::ServiceMarkedForDelete);
    for (const QString& bad : {u""_s, u"a\\b"_s, QString(257, u'x')})
        EXPECT_EQ(tree.open(bad).errorNumber(), error::InvalidName);
}

TEST_F(TreeServiceTest, takesADriverOfTheSystemForRunning)
{
    const struct
    {
        const char* values;
        quint32 state;
    } cases[] = {
        {"\"Type\"=dword:1\r\n\"Start\"=dword:0\r\n", Running},
        {"\"Type\"=dword:2\r\n\"Start\"=dword:1\r\n", Running},
        {"\"Type\"=dword:1\r\n\"Start\"=dword:3\r\n", Stopped},
        {"\"Type\"=dword:10\r\n\"Start\"=dword:1\r\n", Stopped},
    };
    for (const auto& [values, state] : cases) {
        import(tree.machine.registry(),
            QByteArray("[HKEY_LOCAL_MACHINE\\SYSTEM\\ControlSet001\\Services\\Tcpip]\r\n") + values);
        const auto service = *tree.open(u"tcpip"_s);
        EXPECT_EQ(service->queryStatus()->currentState, state) << values;
        EXPECT_EQ(service->start().errorNumber() == error::ServiceAlreadyRunning, state == Running) << values;
    }
}

TEST_F(TreeServiceTest, findsTheProgramAsWindowsDoes)
{
    tree.makeFolder(u"Windows/System32/drivers"_s);
    ASSERT_TRUE(
        QFile::copy(tree.host(ServiceTree::EmulatorBelow), tree.host(u"Windows/System32/drivers/emu.exe"_s)));
    const QString paths[] = {u"C:\\Program Files\\Quoril\\quoril-emulator.exe --die 7"_s,
        u"system32\\DRIVERS\\emu.exe --die 7"_s, u"\\SystemRoot\\System32\\drivers\\emu.exe --die 7"_s,
        u"%SystemRoot%\\system32\\drivers\\emu --die 7"_s,
        u"\\??\\C:\\Windows\\System32\\drivers\\emu.exe --die 7"_s};
    for (const QString& path : paths) {
        const QString name = u"S"_s + QString::number(tree.names.size());
        tree.add(name, path, ServiceTree::Path::Whole);
        const auto service = *tree.open(name);
        ASSERT_EQ(service->start().errorNumber(), 0u) << qPrintable(path);
        EXPECT_TRUE(tree.comesTo(*service, Stopped));
        EXPECT_EQ(service->queryStatus()->win32ExitCode, 7u) << qPrintable(path);
    }
}

TEST_F(TreeServiceTest, removesAMarkedServiceWhenItStops)
{
    tree.add(u"GOING"_s);
    auto service = *tree.open(u"GOING"_s);
    ASSERT_TRUE(service->start());
    ASSERT_TRUE(tree.comesTo(*service, Running));
    ASSERT_TRUE(service->markForDelete());
    EXPECT_EQ(service->changeConfig({}).errorNumber(), error::ServiceMarkedForDelete);
    service.reset();
    service = *tree.open(u"GOING"_s);
    EXPECT_EQ(service->queryStatus()->currentState, Running);
    ASSERT_TRUE(service->control(ServiceControlStop));
    for (int i = 0; i < 2000 && tree.open(u"GOING"_s); ++i)
        std::this_thread::sleep_for(5ms);
    EXPECT_EQ(tree.open(u"GOING"_s).errorNumber(), error::ServiceDoesNotExist);
    EXPECT_FALSE(QDir(tree.folder(u"GOING"_s).path()).exists());
}

TEST_F(TreeServiceTest, stopsNoServiceThatIsNeeded)
{
    tree.add(u"LICENCE"_s);
    tree.add(u"CERES"_s);
    const auto needed = *tree.open(u"LICENCE"_s);
    const auto service = *tree.open(u"CERES"_s);
    ServiceConfigChange change;
    change.dependencies = QStringList{u"licence"_s};
    ASSERT_TRUE(service->changeConfig(change));
    ASSERT_TRUE(needed->start() && service->start());
    ASSERT_TRUE(tree.comesTo(*needed, Running) && tree.comesTo(*service, Running));
    EXPECT_EQ(needed->control(ServiceControlStop).errorNumber(), error::DependentServicesRunning);
    ASSERT_TRUE(service->control(ServiceControlStop));
    ASSERT_TRUE(tree.comesTo(*service, Stopped));
    EXPECT_TRUE(needed->control(ServiceControlStop));
    EXPECT_TRUE(tree.comesTo(*needed, Stopped));
}

TEST_F(TreeServiceTest, locksTheDatabaseBetweenProcesses)
{
    EXPECT_FALSE(tree.manager()->queryLockStatus(1024)->isLocked);
    const pid_t holder = ::fork();
    if (holder == 0) {
        TreeMachine other(tree.root());
        const auto manager = other.services().openManager(service_access::ManagerGenericAll);
        const auto lock = (*manager)->lockDatabase();
        ::pause();
    }
    for (int i = 0; i < 2000 && !tree.manager()->queryLockStatus(1024)->isLocked; ++i)
        std::this_thread::sleep_for(5ms);
    EXPECT_EQ(tree.manager()->lockDatabase().errorNumber(), error::ServiceDatabaseLocked);
    EXPECT_EQ(tree.manager()->queryLockStatus(24).errorNumber(), error::InsufficientBuffer);
    EXPECT_TRUE(tree.manager()->queryLockStatus(1024)->owner.contains(u'\\'));
    ::kill(holder, SIGKILL);
    ::waitpid(holder, nullptr, 0);
    EXPECT_FALSE(tree.manager()->queryLockStatus(1024)->isLocked);
    EXPECT_TRUE(tree.manager()->lockDatabase());
    EXPECT_TRUE(tree.manager()->lockDatabase()) << "the first lock ended with its object";
    // A lock file that can't be opened is held by nobody.
    const QString file = ServiceFolder::parent(tree.machine.paths()) + u"/.database"_s;
    ASSERT_TRUE(QFile::remove(file) && QDir().mkdir(file));
    EXPECT_EQ(tree.manager()->lockDatabase().errorNumber(), error::WriteProtect);
}

TEST_F(TreeServiceTest, leavesNothingBehindInManyRuns)
{
    constexpr int services = 4;
    constexpr int rounds = 50;
    std::vector<std::unique_ptr<Service>> open;
    for (int i = 0; i < services; ++i) {
        tree.add(u"I%1"_s.arg(i));
        open.push_back(*tree.open(tree.names.last()));
    }
    const qsizetype before = descriptors();
    for (int round = 0; round < rounds; ++round) {
        for (const auto& service : open)
            ASSERT_EQ(service->start().errorNumber(), 0u) << round;
        for (const auto& service : open) {
            ASSERT_TRUE(tree.comesTo(*service, Running)) << round;
            ASSERT_TRUE(service->control(ServiceControlStop)) << round;
        }
        for (const auto& service : open)
            ASSERT_TRUE(tree.comesTo(*service, Stopped)) << round;
    }
    EXPECT_EQ(descriptors(), before);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a child was left";
    EXPECT_EQ(events(u"System").size(), 2 * services * rounds);
    for (const QString& name : tree.names)
        EXPECT_EQ(QDir(tree.folder(name).path()).entryList(QDir::Files | QDir::Hidden),
            QStringList({u"host"_s, u"state"_s}));
}

} // namespace

} // namespace quoril::test
