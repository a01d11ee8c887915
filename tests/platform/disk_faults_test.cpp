// What becomes of a tree when the disk fills up, or the program is killed, at any single step of a change.

#include "formats/event_record.h"
#include "platform/event_logs.h"
#include "platform/services.h"
#include "platform/tree/sample_machine.h"
#include "platform/tree/tree_service_state.h"
#include "support/temporary_tree.h"

#include <QCoreApplication>
#include <QDirIterator>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <fcntl.h>
#include <ostream>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

enum class Fault
{
    None,
    FullOnce, // room is there again at once
    Full, // there is none from then on
    Kill
};

struct Disk
{
    Fault fault = Fault::None;
    int left = 0; // steps until it comes
    bool hasCome = false;
};
Disk disk;
std::atomic<bool> isBornForOthers = false; // a file was made that more than its owner could open

/// Whether this step finds no room; a step that only moves or removes always finds some.
bool faultComes(bool needsRoom)
{
    if (disk.fault == Fault::None || (!needsRoom && disk.fault != Fault::Kill))
        return false;
    if (--disk.left > 0 || (disk.fault == Fault::FullOnce && disk.hasCome))
        return false;
    disk.hasCome = true;
    return true;
}

/// Whether a step fails; here a kill ends the program.
bool fails(bool needsRoom)
{
    if (!faultComes(needsRoom))
        return false;
    if (disk.fault == Fault::Kill)
        ::raise(SIGKILL);
    errno = ENOSPC;
    return true;
}

int openStep(int folder, const char* path, int flags, int mode)
{
    const bool makes = (flags & O_CREAT) != 0 && ::faccessat(folder, path, F_OK, 0) != 0;
    if (makes && (mode & 077) != 0)
        isBornForOthers = true;
    return makes && fails(true) ? -1 : int(::syscall(SYS_openat, folder, path, flags, mode));
}

/// A write that meets the fault gets half of its bytes to the disk.
long writeStep(long number, int file, const void* bytes, std::size_t count, auto... place)
{
    if (!faultComes(true))
        return ::syscall(number, file, bytes, count, place...);
    const long half = ::syscall(number, file, bytes, count / 2, place...);
    if (disk.fault == Fault::Kill)
        ::raise(SIGKILL);
    errno = ENOSPC;
    return half > 0 ? half : -1;
}

} // namespace

// The program's own definitions of these calls stand in the place of the library's, for all that it links.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)
extern "C" {
ssize_t write(int file, const void* bytes, std::size_t count)
{
    return writeStep(SYS_write, file, bytes, count);
}
ssize_t pwrite(int file, const void* bytes, std::size_t count, off_t place)
{
    return writeStep(SYS_pwrite64, file, bytes, count, place);
}
int open64(const char* path, int flags, ...)
{
    std::va_list more;
    va_start(more, flags);
    const int mode = (flags & O_CREAT) != 0 ? va_arg(more, int) : 0;
    va_end(more);
    return openStep(AT_FDCWD, path, flags, mode);
}
int openat64(int folder, const char* path, int flags, ...)
{
    std::va_list more;
    va_start(more, flags);
    const int mode = (flags & O_CREAT) != 0 ? va_arg(more, int) : 0;
    va_end(more);
    return openStep(folder, path, flags, mode);
}
int openat(int folder, const char* path, int flags, ...) __attribute__((alias("openat64")));
int open(const char* path, int flags, ...) __attribute__((alias("open64")));
int mkdirat(int folder, const char* path, mode_t mode) noexcept
{
    return fails(true) ? -1 : int(::syscall(SYS_mkdirat, folder, path, mode));
}
// A kill takes nothing from the system's memory, so that the disk needs no waiting for.
int fsync(int /*file*/)
{
    return fails(true) ? -1 : 0;
}
int fdatasync(int /*file*/)
{
    return fails(true) ? -1 : 0;
}
int renameat(int folder, const char* from, int to, const char* target) noexcept
{
    return fails(false) ? -1 : int(::syscall(SYS_renameat, folder, from, to, target));
}
int renameat2(int folder, const char* from, int to, const char* target, unsigned flags) noexcept
{
    return fails(false) ? -1 : int(::syscall(SYS_renameat2, folder, from, to, target, flags));
}
int unlinkat(int folder, const char* path, int flags) noexcept
{
    return fails(false) ? -1 : int(::syscall(SYS_unlinkat, folder, path, flags));
}
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name)

namespace quoril::test {

namespace {

const QString ServiceKey = u"SYSTEM\\ControlSet001\\Services\\CERES"_s;

EventEntry event(const QString& text)
{
    EventEntry entry;
    entry.sourceName = u"QUORIL"_s;
    entry.insertStrings.append(text);
    return entry;
}

/// All that a program finds in the tree, read anew.
QByteArray stateOf(const TemporaryTree& tree)
{
    TreeMachine machine(tree.root());
    QByteArray state;
    for (const QStringView hive : {u"SYSTEM", u"SOFTWARE"}) {
        const auto text = exportRegistryText(machine.registry(), hive);
        state += text ? QByteArray(*text).replace(QByteArray(1, 0), {}) : "unreadable hive";
    }
    for (const QStringView name : {u"System", u"Application"}) {
        const auto log = machine.eventLogs().open(name, {});
        state += log || log.errorNumber() == error::FileNotFound ? "\nlog" : "\nunreadable log";
        EventEntry entry;
        while (log && (*log)->next(entry))
            state += ' ' + QByteArray::number(entry.recordNumber)
                + entry.insertStrings.toList().join(u' ').toUtf8();
    }
    return state + '\n' + tree.read(u"ProgramData/Quoril/services/CERES/state"_s);
}

QByteArray reg(const QByteArray& keys)
{
    return "Windows Registry Editor Version 5.00\n\n" + keys;
}

struct Change
{
    const char* name;
    Status (*make)(TreeMachine&);
    bool mayShow = false; ///< a step after the one that counts can fail: reported, and there all the same

    friend void PrintTo(const Change& change, std::ostream* out) { *out << change.name; }
};

const Change Changes[] = {
    {"value", [](TreeMachine& m) { return (*keyAt(m.registry(), ServiceKey))->setText(u"Text", u"new"); }},
    {"import",
        [](TreeMachine& m) {
            return importRegistryText(m.registry(),
                reg("[HKEY_LOCAL_MACHINE\\SYSTEM\\ControlSet001\\Services\\CERES]\n\"Text\"="
                    "\"new\"\n\"More\"=dword:1\n"
                    "[-HKEY_LOCAL_MACHINE\\SYSTEM\\ControlSet001\\Services\\Old]\n"));
        }},
    {"service",
        [](TreeMachine& m) -> Status {
            const auto manager = m.services().openManager(service_access::ManagerGenericAll);
            if (!manager)
                return manager.failure();
            const auto made = (*manager)->createService(
                {u"NEW"_s, u"New"_s, u"C:\\new.exe"_s, u"Group"_s, start_type::Manual, {u"CERES"_s}});
            return made ? Status() : Status(made.failure());
        }},
    {"event", [](TreeMachine& m) { return m.eventLogs().report(u"System", event(u"new"_s)); }, true},
    {"first event", [](TreeMachine& m) { return m.eventLogs().report(u"Application", event(u"new"_s)); },
        true},
    {"state",
        [](TreeMachine& m) -> Status {
            const auto folder = ServiceFolder::make(m.paths(), u"CERES");
            return folder ? folder->record({{service_state::Stopped, 7, 0, 0}, {}, {}})
                          : Status(folder.failure());
        }},
};

class DiskFaultsTest : public testing::TestWithParam<Change>
{
protected:
    // In memory, for a disk makes each rename wait.
    static void SetUpTestSuite()
    {
        if (QFileInfo(u"/dev/shm"_s).isWritable())
            qputenv("TMPDIR", "/dev/shm");
    }
    static void TearDownTestSuite() { qunsetenv("TMPDIR"); }

    static void fill(const TemporaryTree& tree)
    {
        TreeMachine machine(tree.root());
        import(machine.registry(),
            "[HKEY_LOCAL_MACHINE\\SYSTEM\\Select]\n\"Current\"=dword:1\n"
            "[HKEY_LOCAL_MACHINE\\SYSTEM\\ControlSet001\\Services\\CERES]\n\"Text\"=\"old\"\n"
            "[HKEY_LOCAL_MACHINE\\SYSTEM\\ControlSet001\\Services\\Old]\n");
        ASSERT_TRUE(machine.eventLogs().report(u"System", event(u"old"_s)));
        ASSERT_TRUE(ServiceFolder::make(machine.paths(), u"CERES")
                        ->record({{service_state::Stopped, 3, 0, 0}, {}, {}}));
    }
    static Status make(const TemporaryTree& tree)
    {
        TreeMachine machine(tree.root());
        return GetParam().make(machine);
    }
    /// Makes the change once more, which needs every lock and finds what was left over.
    void expectNewStateAfterAnother(const TemporaryTree& tree, const QByteArray& old)
    {
        const bool isOld = stateOf(tree) == old;
        const auto begin = std::chrono::steady_clock::now();
        const Status again = make(tree);
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5)) << "a lock was left";
        EXPECT_TRUE(again || (!isOld && again.errorNumber() == error::ServiceExists)) << again.errorNumber();
        EXPECT_NE(stateOf(tree), old);
        QDirIterator left(
            tree.root(), {u".*.new"_s}, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        EXPECT_FALSE(left.hasNext()) << left.next();
    }
};

TEST_P(DiskFaultsTest, AFullDiskIsReportedAndLosesNothing)
{
    int steps = 0;
    for (const Fault fault : {Fault::FullOnce, Fault::Full}) {
        bool hasCome = true;
        for (int at = 1; hasCome; ++at) {
            SCOPED_TRACE(at);
            const TemporaryTree tree;
            fill(tree);
            const QByteArray old = stateOf(tree);
            disk = {fault, at, false};
            isBornForOthers = false;
            const Status made = make(tree);
            EXPECT_FALSE(isBornForOthers);
            hasCome = std::exchange(disk, {}).hasCome;
            EXPECT_TRUE(hasCome ? at < 100 : made.ok() && at > 3);
            const bool isOld = stateOf(tree) == old;
            EXPECT_TRUE(isOld != made.ok() || GetParam().mayShow);
            EXPECT_TRUE(
                made || made.errorNumber() == error::DiskFull || made.errorNumber() == error::WriteFault)
                << made.errorNumber();
            expectNewStateAfterAnother(tree, old);
            steps += hasCome ? 1 : 0;
        }
    }
    RecordProperty("steps", steps);
}

TEST_P(DiskFaultsTest, AKilledChangeIsThereOrNot)
{
    const TemporaryTree whole;
    fill(whole);
    const QByteArray old = stateOf(whole);
    ASSERT_TRUE(make(whole));
    const QByteArray changed = stateOf(whole);
    int status = SIGKILL;
    int at = 0;
    while (WIFSIGNALED(status)) {
        ++at;
        SCOPED_TRACE(at);
        const TemporaryTree tree;
        fill(tree);
        const pid_t writer = ::fork();
        if (writer == 0) {
            disk = {Fault::Kill, at, false};
            const Status made = make(tree);
            ::_exit(made ? 0 : 1);
        }
        ASSERT_EQ(::waitpid(writer, &status, 0), writer);
        ASSERT_TRUE(WIFSIGNALED(status) ? at < 100 : status == 0 && at > 3);
        const QByteArray now = stateOf(tree);
        EXPECT_TRUE(now == old || now == changed) << now;
        expectNewStateAfterAnother(tree, old);
    }
    RecordProperty("steps", at - 1);
}

INSTANTIATE_TEST_SUITE_P(Each, DiskFaultsTest, testing::ValuesIn(Changes),
    [](const auto& test) { return QString::fromLatin1(test.param.name).remove(u' ').toStdString(); });

TEST(SampleMachineFaultsTest, AKilledMakingLeavesNoMachineOrAWholeOne)
{
    int argc = 0;
    const QCoreApplication application(argc, nullptr);
    const TemporaryTree folder;
    const auto services = [](const QString& place) {
        TreeMachine machine(place);
        const auto text = exportRegistryText(machine.registry(), u"SYSTEM\\CurrentControlSet\\Services");
        return text ? *text : QByteArray();
    };
    ASSERT_TRUE(createSampleMachine(folder.host(u"whole"_s)));
    const QByteArray whole = services(folder.host(u"whole"_s));
    const QString place = folder.host(u"machine"_s);
    int kills = 0;
    for (int status = SIGKILL, at = 1; WIFSIGNALED(status); at += 5, ++kills) {
        const pid_t maker = ::fork();
        if (maker == 0) {
            disk = {Fault::Kill, at, false};
            ::_exit(createSampleMachine(place) ? 0 : 1);
        }
        ASSERT_EQ(::waitpid(maker, &status, 0), maker);
        // One that was killed after the last step that counts has made it, and the next finds it there.
        ASSERT_TRUE(WIFSIGNALED(status) || QFile::exists(place));
        if (QFile::exists(place)) {
            ASSERT_EQ(services(place), whole) << at;
        }
    }
    EXPECT_GT(kills, 5);
    RecordProperty("steps", kills);
    EXPECT_TRUE(QFile::exists(place));
}

} // namespace

} // namespace quoril::test
