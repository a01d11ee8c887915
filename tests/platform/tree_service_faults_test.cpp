#include "platform/host/file_lock.h"
#include "platform/host/posix/held_process.h"
#include "support/service_tree.h"

#include <algorithm>
#include <array>
#include <stop_token>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace quoril::test {

namespace {

using namespace service_state;

class TreeServiceFaultsTest : public testing::Test
{
protected:
    /// How long the hosts that are started from here on wait for a report.
    static void setStartLimit(const QByteArray& milliseconds)
    {
        qputenv("QUORIL_SERVICE_START_LIMIT", milliseconds);
    }
    void TearDown() override { qunsetenv("QUORIL_SERVICE_START_LIMIT"); }

    ServiceTree tree;
};

/// What docs/service-handshake.md gives as the smallest service.
constexpr const char* SmallestService = R"(
report() {
    printf 'state=%s\n' "$1" > "$QUORIL_SERVICE_FOLDER/.report.new"
    mv "$QUORIL_SERVICE_FOLDER/.report.new" "$QUORIL_SERVICE_FOLDER/report"
}
trap 'report stopped; exit 0' TERM
report running
while :; do sleep 1 & wait $!; done
)";

TEST_F(TreeServiceFaultsTest, TakesAnyProgramThatKeepsToTheHandshake)
{
    tree.program(u"small.exe"_s, SmallestService);
    tree.add(u"Ünïcode & Co."_s, u"C:\\small.exe"_s, ServiceTree::Path::Whole);
    const auto service = *tree.open(u"ÜNÏCODE & CO."_s);
    for (int i = 0; i < 2; ++i) {
        ASSERT_EQ(service->start().errorNumber(), 0u);
        ASSERT_TRUE(tree.comesTo(*service, Running));
        ASSERT_TRUE(service->control(ServiceControlStop));
        ASSERT_TRUE(tree.comesTo(*service, Stopped));
        EXPECT_EQ(service->queryStatus()->win32ExitCode, 0u);
    }
}

TEST_F(TreeServiceFaultsTest, RecordsHowAServiceDied)
{
    struct Case
    {
        const char* script;
        quint32 exitCode;
    };
    const Case cases[] = {
        {"exit 3", 3},
        {"exit 0", error::ProcessAborted},
        {"kill -SEGV $$", 0xC0000005},
        {"printf 'state=stopped\\nexit-code=1068\\n' > \"$QUORIL_SERVICE_FOLDER/report\"; exit 0", 1068},
        {"printf 'state=nonsense\\n\\0\\377=' > \"$QUORIL_SERVICE_FOLDER/report\"; exit 9", 9},
    };
    for (const Case& each : cases) {
        const QString name = u"DYING%1"_s.arg(tree.names.size());
        tree.program(name + u".exe"_s, each.script);
        tree.add(name, u"C:\\"_s + name, ServiceTree::Path::Whole);
        const auto service = *tree.open(name);
        ASSERT_EQ(service->start().errorNumber(), 0u) << each.script;
        const ServiceStatus end = tree.await(*service, Stopped);
        EXPECT_EQ(end.currentState, Stopped);
        EXPECT_EQ(end.win32ExitCode, each.exitCode) << each.script;
    }
}

TEST_F(TreeServiceFaultsTest, StartsOnceWhenManyStartAtOnce)
{
    tree.add(u"WANTED"_s);
    std::array<quint32, 4> results = {};
    std::vector<std::thread> consoles;
    for (quint32& result : results)
        consoles.emplace_back([&] {
            TreeMachine console(tree.root());
            const auto manager = *console.services().openManager(service_access::ManagerGenericAll);
            result = (*manager->openService(u"WANTED", service_access::Start))->start().errorNumber();
        });
    for (std::thread& console : consoles)
        console.join();
    EXPECT_EQ(std::count(results.begin(), results.end(), error::Success), 1);
    EXPECT_EQ(std::count(results.begin(), results.end(), error::ServiceAlreadyRunning), 3);
}

TEST_F(TreeServiceFaultsTest, EndsWhatDoesNotReportInTime)
{
    setStartLimit("500");
    tree.add(u"SILENT"_s, u"--no-report"_s);
    tree.add(u"HANGING"_s, u"--hang-start"_s);
    for (const QString& name : tree.names) {
        const auto service = *tree.open(name);
        ASSERT_TRUE(service->start());
        EXPECT_EQ(service->queryStatus()->currentState, StartPending);
        const ServiceStatus end = tree.await(*service, Stopped);
        EXPECT_EQ(end.currentState, Stopped);
        EXPECT_EQ(end.win32ExitCode, error::ServiceRequestTimeout) << name;
    }
}

TEST_F(TreeServiceFaultsTest, StaysStopPendingWhileTheStopIsIgnored)
{
    tree.add(u"STUBBORN"_s, u"--ignore-stop"_s);
    const auto service = *tree.open(u"STUBBORN"_s);
    ASSERT_TRUE(service->start());
    ASSERT_TRUE(tree.comesTo(*service, Running));
    ASSERT_TRUE(service->control(ServiceControlStop));
    EXPECT_EQ(tree.await(*service, Stopped, 300ms).currentState, StopPending);
    // The process is killed by somebody else: the host records its end.
    ASSERT_TRUE(tree.folder(u"STUBBORN"_s).current().service->signal(SIGKILL));
    EXPECT_TRUE(tree.comesTo(*service, Stopped));
}

TEST_F(TreeServiceFaultsTest, KnowsAServiceWhoseHostWasKilled)
{
    tree.add(u"ORPHAN"_s);
    const auto service = *tree.open(u"ORPHAN"_s);
    ASSERT_TRUE(service->start());
    ASSERT_TRUE(tree.comesTo(*service, Running));
    const ServiceRecord record = tree.folder(u"ORPHAN"_s).current();
    ASSERT_TRUE(record.host->signal(SIGKILL));
    while (record.host->isAlive())
        std::this_thread::sleep_for(1ms);
    // An update puts a new program in the place of the one that runs.
    const QString program = tree.host(ServiceTree::EmulatorBelow);
    ASSERT_TRUE(QFile::remove(program) && QFile::copy(QStringLiteral(QUORIL_EMULATOR), program));
    EXPECT_EQ(service->queryStatus()->currentState, Running);
    EXPECT_EQ(service->start().errorNumber(), error::ServiceAlreadyRunning);
    // A stop that the host took with it is still asked for.
    ASSERT_TRUE(tree.folder(u"ORPHAN"_s).askStop());
    EXPECT_EQ(service->queryStatus()->currentState, StopPending);
    ASSERT_TRUE(service->control(ServiceControlStop));
    EXPECT_TRUE(tree.comesTo(*service, Stopped));
    EXPECT_EQ(service->queryStatus()->win32ExitCode, 0u);
    ASSERT_EQ(service->start().errorNumber(), 0u);
    EXPECT_TRUE(tree.comesTo(*service, Running));
}

TEST_F(TreeServiceFaultsTest, CountsAProcessAsAliveUntilItsLocksAreFree)
{
    const HostPlace place{*HostFolder::open(tree.root()), u"lock"_s};
    for (int i = 0; i < 50; ++i) {
        const pid_t holder = ::fork();
        if (holder == 0) {
            const TryLock lock(place);
            const int watch = ::inotify_init1(IN_CLOEXEC); // what makes the end of a host take its time
            ::inotify_add_watch(watch, "/", IN_CREATE);
            ::pause();
            ::_exit(0);
        }
        while (!TryLock::isTaken(place))
            std::this_thread::sleep_for(1ms);
        const auto identity = ProcessIdentity::of(holder);
        ASSERT_TRUE(identity && identity->signal(SIGKILL));
        while (identity->isAlive()) { }
        ASSERT_TRUE(TryLock(place).isHeld()) << i;
        ASSERT_EQ(::waitpid(holder, nullptr, 0), holder);
    }
}

TEST_F(TreeServiceFaultsTest, OutlivesTheProgramThatStartedIt)
{
    tree.add(u"LASTING"_s);
    const pid_t starter = ::fork();
    if (starter == 0) {
        TreeMachine other(tree.root());
        const auto manager = other.services().openManager(service_access::ManagerGenericAll);
        (void)(*(*manager)->openService(u"LASTING", service_access::Start))->start().ok();
        ::raise(SIGKILL);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(starter, &status, 0), starter);
    ASSERT_TRUE(WIFSIGNALED(status));
    const auto service = *tree.open(u"LASTING"_s);
    EXPECT_TRUE(tree.comesTo(*service, Running));
    EXPECT_TRUE(service->control(ServiceControlStop));
    EXPECT_TRUE(tree.comesTo(*service, Stopped));
}

TEST_F(TreeServiceFaultsTest, TakesNoOtherProcessForTheService)
{
    tree.add(u"REUSED"_s);
    const auto service = *tree.open(u"REUSED"_s);
    const auto folder = ServiceFolder::make(tree.machine.paths(), u"REUSED");
    ASSERT_TRUE(folder);
    const pid_t stranger = ::fork();
    if (stranger == 0) {
        ::execl("/bin/sleep", "sleep", "60", nullptr);
        ::_exit(1);
    }
    auto real = ProcessIdentity::of(stranger);
    for (int i = 0; i < 2000 && real && !real->image.endsWith("sleep"); ++i) {
        std::this_thread::sleep_for(5ms);
        real = ProcessIdentity::of(stranger);
    }
    ASSERT_TRUE(real);
    ServiceRecord record{{Running, 0, 0, 0}, real, {}};
    ASSERT_TRUE(folder->record(record));
    EXPECT_EQ(service->queryStatus()->currentState, Running);
    // A record that others could have written names whom it likes.
    const QByteArray state = QFile::encodeName(folder->path() + u"/state"_s);
    const auto isRefused = [&] {
        return service->queryStatus()->currentState == Stopped
            && service->control(ServiceControlStop).errorNumber() == error::ServiceNotActive;
    };
    EXPECT_TRUE(::chmod(state.constData(), 0664) == 0 && isRefused());
    EXPECT_TRUE(::chmod(state.constData(), 0644) == 0 && !::link(state.constData(), (state + '2').constData())
        && isRefused());
    EXPECT_TRUE(::unlink((state + '2').constData()) == 0 && service->queryStatus()->currentState == Running);
    EXPECT_TRUE(::getuid() != 0 || (::chown(state.constData(), 65534, 0) == 0 && isRefused()));
    record.service->image.clear(); // as it is recorded before it runs its program
    ASSERT_TRUE(folder->record(record));
    EXPECT_EQ(service->queryStatus()->currentState, Running);
    const auto altered = {+[](ProcessIdentity& id) { --id.startTicks; },
        +[](ProcessIdentity& id) { id.image = "/other"; }, +[](ProcessIdentity& id) { id.boot = "earlier"; }};
    for (const auto& alter : altered) {
        record.service = real;
        alter(*record.service);
        ASSERT_TRUE(folder->record(record));
        EXPECT_EQ(service->queryStatus()->currentState, Stopped);
        EXPECT_EQ(service->control(ServiceControlStop).errorNumber(), error::ServiceNotActive);
        EXPECT_FALSE(record.service->signal(SIGTERM));
    }
    EXPECT_EQ(::waitpid(stranger, nullptr, WNOHANG), 0) << "the stranger was signalled";
    ::kill(stranger, SIGKILL);
    ::waitpid(stranger, nullptr, 0);
}

TEST_F(TreeServiceFaultsTest, AStateThatIsReplacedWhileItIsReadIsOneOfTheTwo)
{
    const auto folder = ServiceFolder::make(tree.machine.paths(), u"BUSY");
    const ServiceRecord record{{Running, 0, 0, 0}, ProcessIdentity::of(::getpid()), {}};
    ASSERT_TRUE(folder->record(record));
    const std::jthread host([&](const std::stop_token& ended) {
        while (!ended.stop_requested())
            (void)folder->record(record).ok();
    });
    for (int i = 0; i < 3000; ++i)
        ASSERT_EQ(folder->current().status.currentState, Running) << i;
}

TEST_F(TreeServiceFaultsTest, AProcessThatNobodyRecordedNeverRuns)
{
    tree.program(u"mark.exe"_s, "touch \"$0.ran\"; exec sleep 60");
    const QString program = tree.host(u"mark.exe"_s);
    const HostCommand command{program, {QFile::encodeName(program)}, {"PATH=/usr/bin:/bin"}, tree.root()};
    std::array<int, 2> ends = {};
    ASSERT_EQ(::pipe(ends.data()), 0);
    const pid_t host = ::fork();
    if (host == 0) {
        const auto held = HeldProcess::start(command);
        const pid_t child = held ? (*held)->pid() : 0;
        (void)!::write(ends[1], &child, sizeof child);
        ::raise(SIGKILL);
    }
    pid_t child = 0;
    ASSERT_EQ(::read(ends[0], &child, sizeof child), ssize_t(sizeof child));
    ::waitpid(host, nullptr, 0);
    for (int i = 0; i < 2000 && ProcessIdentity::of(child); ++i)
        std::this_thread::sleep_for(5ms);
    EXPECT_FALSE(ProcessIdentity::of(child));
    { // nor one whose record could not be written
        const auto held = HeldProcess::start(command);
        ASSERT_TRUE(held);
    }
    EXPECT_FALSE(QFile::exists(program + u".ran"_s));
}

TEST_F(TreeServiceFaultsTest, ALockThatSomebodyElseHoldsIsReportedAsOne)
{
    tree.add(u"CERES"_s);
    const TryLock lock(ServiceFolder::make(tree.machine.paths(), u"CERES")->place(u"host"));
    EXPECT_EQ((*tree.open(u"CERES"_s))->start().errorNumber(), error::LockViolation);
}

TEST_F(TreeServiceFaultsTest, ReadsNoStateOutOfAHostileFolder)
{
    tree.add(u"CERES"_s);
    const auto service = *tree.open(u"CERES"_s);
    const QString folder = ServiceFolder::make(tree.machine.paths(), u"CERES")->path();
    const QString state = folder + u"/state"_s;
    const auto isStopped = [&] { return service->queryStatus()->currentState == Stopped; };
    for (const QByteArray& text :
        {QByteArray(), QByteArray("state=running"), QByteArray("state=running\npid=-1\n"),
            QByteArray("state=running\npid=1\nstart=99999999999999999999\n"), QByteArray(100000, '=')}) {
        QFile file(state);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        file.close();
        EXPECT_TRUE(isStopped()) << text.left(60);
    }
    QFile::remove(state);
    ASSERT_EQ(::mkfifo(QFile::encodeName(state).constData(), 0600), 0);
    EXPECT_TRUE(isStopped());
    // A link in place of a file that the manager writes is replaced, never written through.
    QFile::remove(state);
    const QString outside = tree.root() + u".outside"_s;
    ASSERT_TRUE(QFile::link(outside, state) && QFile::link(outside, folder + u"/.state.new"_s));
    ASSERT_EQ(service->start().errorNumber(), 0u);
    EXPECT_TRUE(tree.comesTo(*service, Running));
    EXPECT_FALSE(QFile::exists(outside));
}

} // namespace

} // namespace quoril::test
