#include "support/service_tree.h"
#include "support/utf16.h"

#include <QDir>

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

TEST_F(TreeServiceTest, IsTheSameToEveryConsoleAndInTheLogs)
{
    tree.add(u"CERES"_s, u"--start-delay 600 --stop-delay 600"_s);
    const auto service = *tree.open(u"ceres"_s);
    // The fixed part has 64 bytes; then come the four texts and the empty list.
    const auto config = *service->queryConfig(8192);
    const qsizetype size = 64
        + 2 * (config.binaryPath + config.loadOrderGroup + config.displayName + u"LocalSystem"_s).size()
        + 2 * 5;
    EXPECT_TRUE(service->queryConfig(size));
    EXPECT_EQ(service->queryConfig(size - 1).errorNumber(), error::InsufficientBuffer);
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
    const QStringList reports = events(u"Application");
    ASSERT_EQ(reports.size(), 1);
    const QString event = reports.first().mid(QStringView(u"QUORIL Emulator: ").size());
    EXPECT_EQ(event.mid(15, 17), u":INFO :  00000249");
    EXPECT_EQ(event.mid(52), u"Session started: CERES");
    const QString text = textOf(tree.read(u"Emulators/CERES.log"_s));
    EXPECT_EQ(text.section(u"\r\n"_s, 0, 0).mid(15),
        u":INFO :  00000249                    Start of session: CERES");
    EXPECT_EQ(text.count(u"\r\n"_s), 4);
    EXPECT_TRUE(text.endsWith(u"\r\n"_s));
}

TEST_F(TreeServiceTest, ReportsWhyAServiceDoesNotStart)
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
        {"ELSEWHERE", u"quoril-emulator.exe"_s, error::FileNotFound},
        {"OUTSIDE", u"C:\\..\\..\\bin\\sh"_s, error::PathNotFound},
    };
    ASSERT_TRUE(tree.machine.files().setCurrentDirectory(u"C:\\Program Files\\Quoril"));
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

TEST_F(TreeServiceTest, TakesADriverOfTheSystemForRunning)
{
    const struct
    {
        const char* values;
        quint32 state;
    } cases[] = {
        {"\"Type\"=dword:1\r\n\"Start\"=dword:0\r\n", Running},
        {"\"Type\"=dword:2\r\n\"Start\"=dword:1\r\n", Running},
        {"\"Type\"=dword:1\r\n\"Start\"=dword:2\r\n", Running},
        {"\"Type\"=dword:1\r\n\"Start\"=dword:3\r\n", Stopped},
        {"\"Type\"=dword:10\r\n\"Start\"=dword:1\r\n", Stopped},
    };
    for (const auto& [values, state] : cases) {
        import(tree.machine.registry(),
            QByteArray("[HKEY_LOCAL_MACHINE\\SYSTEM\\ControlSet001\\Services\\Tcpip]\r\n") + values);
        const auto service = *tree.open(u"tcpip"_s);
        EXPECT_EQ(service->queryStatus()->currentState, state) << values;
        EXPECT_EQ(service->start().errorNumber() == error::ServiceAlreadyRunning, state == Running) << values;
        EXPECT_EQ(service->control(ServiceControlStop).errorNumber(),
            state == Running ? error::InvalidServiceControl : error::ServiceNotActive)
            << values;
    }
}

TEST_F(TreeServiceTest, FindsTheProgramAsWindowsDoes)
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
        ASSERT_EQ(service->start().errorNumber(), 0u) << path;
        EXPECT_TRUE(tree.comesTo(*service, Stopped));
        EXPECT_EQ(service->queryStatus()->win32ExitCode, 7u) << path;
    }
}

TEST_F(TreeServiceTest, RemovesAMarkedServiceWhenItStops)
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
    EXPECT_FALSE(tree.folder(u"GOING"_s).exists());
}

TEST_F(TreeServiceTest, StartsWhatAServiceNeedsAndKeepsIt)
{
    import(tree.machine.registry(),
        "[HKEY_LOCAL_MACHINE\\SYSTEM\\ControlSet001\\Services\\Tcpip]\r\n"
        "\"Type\"=dword:1\r\n\"Start\"=dword:0\r\n");
    const auto setUp = [this](const QString& name, const QString& needs, const QString& group,
                           const QString& options = {}) {
        tree.add(name, options);
        const auto key = keyAt(tree.machine.registry(), u"SYSTEM\\CurrentControlSet\\Services\\"_s + name);
        EXPECT_TRUE((*key)->setMultiString(u"DependOnService", needs.split(u' ', Qt::SkipEmptyParts)));
        EXPECT_TRUE((*key)->setMultiString(u"DependOnGroup", group.split(u' ', Qt::SkipEmptyParts)));
    };
    const auto state
        = [this](const QString& name) { return (*tree.open(name))->queryStatus()->currentState; };
    setUp(u"LICENCE"_s, {}, {}, u"--start-delay 300"_s);
    setUp(u"BRIDGE"_s, u"licence"_s, {}, u"--start-delay 300"_s);
    setUp(u"IDLE"_s, {}, {});
    setUp(u"DYING"_s, {}, {}, u"--die 3"_s);
    setUp(u"OFF"_s, {}, {});
    setUp(u"GOING"_s, {}, {});
    const auto going = *tree.open(u"GOING"_s);
    ASSERT_TRUE(going->markForDelete());
    ServiceConfigChange change;
    change.startType = start_type::Disabled;
    ASSERT_TRUE((*tree.open(u"OFF"_s))->changeConfig(change));
    for (const QString& name : {u"DYING"_s, u"HELPER"_s}) {
        if (name == u"HELPER")
            setUp(name, {}, {});
        const auto key = keyAt(tree.machine.registry(), u"SYSTEM\\CurrentControlSet\\Services\\"_s + name);
        ASSERT_TRUE((*key)->setText(u"Group", name == u"DYING" ? u"Bad"_s : u"Good"_s));
    }
    const struct
    {
        QString name;
        QString needs;
        QString groups;
        quint32 number;
    } cases[] = {
        {u"LOST"_s, u"IDLE none"_s, {}, error::ServiceDependencyDeleted},
        {u"FORSAKEN"_s, u"IDLE going"_s, {}, error::ServiceDependencyDeleted},
        {u"AFTER"_s, u"IDLE LOST"_s, {}, error::ServiceDependencyFail},
        {u"LOCKED"_s, u"IDLE OFF"_s, {}, error::ServiceDependencyFail},
        {u"ROUND"_s, u"IDLE ABOUT"_s, {}, error::CircularDependency},
        {u"ABOUT"_s, u"IDLE round"_s, {}, error::CircularDependency},
        {u"BESIDE"_s, u"IDLE ROUND"_s, {}, error::CircularDependency},
        {u"MOURNING"_s, u"DYING"_s, {}, error::ServiceDependencyFail},
        {u"DESERTED"_s, {}, u"bad"_s, error::ServiceDependencyFail},
        {u"JOINED"_s, {}, u"good Nobody"_s, error::Success},
        {u"CERES"_s, u"TCPIP bridge"_s, {}, error::Success},
    };
    for (const auto& each : cases)
        setUp(each.name, each.needs, each.groups);
    for (const auto& each : cases)
        EXPECT_EQ((*tree.open(each.name))->start().errorNumber(), each.number) << each.name;
    EXPECT_EQ(state(u"IDLE"_s), Stopped) << "nothing is started for what can't start";
    EXPECT_EQ(state(u"HELPER"_s), Running);
    EXPECT_EQ(state(u"BRIDGE"_s), Running);

    change = {};
    change.dependencies = QStringList{u"tcpip"_s, u"ceres"_s};
    EXPECT_EQ((*tree.open(u"LICENCE"_s))->changeConfig(change).errorNumber(), error::CircularDependency);
    EXPECT_EQ(tree.manager()
                  ->createService({u"SELF"_s, {}, u"x.exe"_s, {}, start_type::Manual, {u"self"_s}})
                  .errorNumber(),
        error::CircularDependency);

    const auto ceres = *tree.open(u"CERES"_s);
    ASSERT_TRUE(tree.comesTo(*ceres, Running));
    const auto stop = [this](const QString& name) {
        return (*tree.open(name))->control(ServiceControlStop).errorNumber();
    };
    EXPECT_EQ(stop(u"LICENCE"_s), error::DependentServicesRunning);
    EXPECT_EQ(stop(u"BRIDGE"_s), error::DependentServicesRunning);
    EXPECT_EQ(stop(u"TCPIP"_s), error::DependentServicesRunning);
    ASSERT_EQ(stop(u"CERES"_s), 0u);
    ASSERT_TRUE(tree.comesTo(*ceres, Stopped));
    EXPECT_EQ(stop(u"TCPIP"_s), error::InvalidServiceControl);
    EXPECT_EQ(stop(u"BRIDGE"_s), 0u);
}

TEST_F(TreeServiceTest, LocksTheDatabaseBetweenProcesses)
{
    EXPECT_FALSE(tree.manager()->queryLockStatus(QueryBlock(1024))->isLocked);
    const pid_t holder = ::fork();
    if (holder == 0) {
        TreeMachine other(tree.root());
        const auto manager = other.services().openManager(service_access::ManagerGenericAll);
        const auto lock = (*manager)->lockDatabase();
        ::pause();
    }
    for (int i = 0; i < 2000 && !tree.manager()->queryLockStatus(QueryBlock(1024))->isLocked; ++i)
        std::this_thread::sleep_for(5ms);
    EXPECT_EQ(tree.manager()->lockDatabase().errorNumber(), error::ServiceDatabaseLocked);
    EXPECT_EQ(tree.manager()->queryLockStatus(QueryBlock(24)).errorNumber(), error::InsufficientBuffer);
    EXPECT_TRUE(tree.manager()->queryLockStatus(QueryBlock(1024))->owner.contains(u'\\'));
    ::kill(holder, SIGKILL);
    ::waitpid(holder, nullptr, 0);
    EXPECT_FALSE(tree.manager()->queryLockStatus(QueryBlock(1024))->isLocked);
    // A lock file that can't be opened is held by nobody.
    const QString file = ServiceFolder::parent(tree.machine.paths())->path() + u"/.database"_s;
    ASSERT_TRUE(QFile::remove(file) && QDir().mkdir(file));
    EXPECT_EQ(tree.manager()->lockDatabase().errorNumber(), error::AccessDenied);
}

TEST_F(TreeServiceTest, LeavesNothingOverInManyRuns)
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
