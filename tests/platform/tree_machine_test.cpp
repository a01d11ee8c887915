#include "platform/tree/tree_machine.h"

#include "platform/machine_choice.h"
#include "platform/tree/sample_machine.h"
#include "support/event_log_samples.h"
#include "support/executable_sample.h"
#include "support/real_data.h"
#include "support/temporary_tree.h"
#include "support/utf16.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>
#include <atomic>
#include <map>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace quoril::test {

namespace {

TEST(TreeMachineTest, ReportsWhyAnEventLogCantBeOpened)
{
    const TemporaryTree tree;
    TreeMachine machine(tree.root());
    EXPECT_EQ(machine.eventLogs().open(u"Application", {}).errorNumber(), error::FileNotFound);
    tree.write(u"Windows/System32/config/AppEvent.Evt"_s, "no log");
    EXPECT_EQ(machine.eventLogs().open(u"Application", {}).errorNumber(), error::EventLogFileCorrupt);
}

TEST(TreeMachineTest, TakesFilesOfTheHostToItsOwnPathsAndBack)
{
    const TemporaryTree tree;
    tree.makeFolder(u"a b"_s);
    tree.write(u"a b/Juno.cfg"_s, "x");
    ASSERT_TRUE(QFile::link(u"/etc"_s, tree.host(u"out"_s)));
    ASSERT_TRUE(QFile::link(tree.root(), tree.root() + u".link"_s));
    TreeMachine machine(tree.root());
    const Files& files = machine.files();
    EXPECT_EQ(*files.hostPath(u"c:/A B/juno.CFG"), tree.host(u"a b/Juno.cfg"_s));
    EXPECT_EQ(*files.machinePath(tree.host(u"a b/../a b/Juno.cfg"_s)), u"C:\\a b\\Juno.cfg");
    EXPECT_EQ(*files.machinePath(tree.root() + u".link/a b/Juno.cfg"_s), u"C:\\a b\\Juno.cfg");
    EXPECT_EQ(files.machinePath(tree.host(u"out/passwd"_s)).errorNumber(), error::PathNotFound);
    EXPECT_EQ(files.machinePath(u"/etc/passwd"_s).errorNumber(), error::PathNotFound);
    QFile::remove(tree.root() + u".link"_s);
}

TEST(TreeMachineTest, UnitesBothFilesOfALogInOrderOfTime)
{
    const QByteArray real = realData(u"System.evtx"_s);
    if (real.isEmpty())
        GTEST_SKIP() << "QUORIL_REAL_DATA is not set";
    const TemporaryTree tree;
    tree.makeFolder(u"Windows/System32/WINEVT/Logs"_s);
    tree.write(u"Windows/System32/WINEVT/Logs/system.EVTX"_s, real);
    TreeMachine machine(tree.root());
    const auto before = machine.eventLogs().open(u"System", {});
    ASSERT_TRUE(before);
    EventEntry entry;
    std::vector<quint32> times;
    while ((*before)->next(entry))
        times.push_back(entry.timeGenerated);
    ASSERT_EQ(times.size(), 5009u);
    const quint32 middle = times[2500];
    ASSERT_TRUE(machine.eventLogs().report(u"System", eventOf(middle, u"Ours"_s, {u"text"_s})));
    const auto after = machine.eventLogs().open(u"System", {middle, middle});
    std::size_t same = 0;
    bool ours = false;
    for (; (*after)->next(entry); ++same)
        ours = ours || entry.sourceName == u"Ours";
    EXPECT_TRUE(ours);
    // What no reading buffer holds is the end of the log, whatever the span.
    EventEntry huge = eventOf(middle, u"Huge"_s, {});
    huge.data.fill('x', 0x10000);
    ASSERT_TRUE(machine.eventLogs().report(u"System", huge));
    const auto cut = machine.eventLogs().open(u"System", {});
    std::ptrdiff_t read = 0;
    while ((*cut)->next(entry))
        ++read;
    EXPECT_EQ(
        read, 1 + (std::ranges::find_if(times, [&](quint32 time) { return time > middle; }) - times.begin()));
    EXPECT_FALSE((*machine.eventLogs().open(u"System", {middle + 1, 0xFFFFFFFF}))->next(entry));
    EXPECT_EQ(same, 1 + static_cast<std::size_t>(std::count(times.begin(), times.end(), middle)));
}

TEST(TreeMachineTest, MayBeUsedFromSeveralThreads)
{
    const TemporaryTree tree;
    TreeMachine machine(tree.root());
    import(machine.registry(),
        "[HKEY_LOCAL_MACHINE\\SYSTEM\\Select]\n\"Current\"=dword:1\n"
        "[HKEY_LOCAL_MACHINE\\SYSTEM\\ControlSet001\\Services\\A\\B]\n\"v\"=\"x\"\n");
    std::atomic<int> failures = 0;
    std::vector<std::jthread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([&, number] {
            const QString path = u"SYSTEM\\CurrentControlSet\\Services"_s;
            for (int i = 0; i < 25; ++i) {
                const auto services = keyAt(machine.registry(), path);
                const QString own = u"T%1"_s.arg(number);
                const bool done = number % 2 == 0
                    ? (*services)->create(own, key_access::AllAccess) && (*services)->removeTree(own)
                    : (*(*services)->open(u"A", key_access::Read))->subkeyName(0, 9)
                        && keyAt(machine.registry(), path);
                failures += done ? 0 : 1;
            }
        });
    }
    threads.clear();
    EXPECT_EQ(failures, 0);
}

TEST(TreeMachineTest, KnowsItsVersion)
{
    const TemporaryTree tree;
    TreeMachine machine(tree.root());
    const SystemInfo& system = machine.systemInfo();
    EXPECT_FALSE(system.version());
    EXPECT_FALSE(system.computerName());
    const QByteArray current
        = "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion]\n\"CurrentVersion\"=";
    const QByteArray control = "[HKEY_LOCAL_MACHINE\\SYSTEM\\ControlSet001\\Control\\";
    import(machine.registry(),
        current
            + "\"5.2\"\n\"CurrentBuild\"=\"1.511.1 ()\"\n\"CurrentBuildNumber\"=\"3790\"\n"
              "\"CSDVersion\"=\"Service Pack 2\"\n\"EditionID\"=\"serverenterprise\"\n"
              "\"ProductName\"=\"Microsoft Windows Server 2003 R2\"\n"
              "[HKEY_LOCAL_MACHINE\\SYSTEM\\Select]\n\"Current\"=dword:1\n"
            + control
            + "ProductOptions]\n\"ProductType\"=\"LanmanNT\"\n\"ProductSuite\"=hex(7):42,00,6c,00,61,00,64,"
              "00,65,00,"
              "00,00,45,00,6e,00,74,00,65,00,72,00,70,00,72,00,69,00,73,00,65,00,00,00,00,00\n"
            + control
            + "Session Manager\\Environment]\n\"PROCESSOR_ARCHITECTURE\"=\"IA64\"\n"
              "\"NUMBER_OF_PROCESSORS\"=\"7\"\n\"PROCESSOR_LEVEL\"=\"6\"\n\"PROCESSOR_REVISION\"=\"5507\"\n");
    const auto version = system.version();
    ASSERT_TRUE(version);
    EXPECT_EQ((std::array{version->platformId, version->major, version->minor, version->build}),
        (std::array{2u, 5u, 2u, 3790u}));
    EXPECT_EQ(version->servicePack, u"Service Pack 2");
    EXPECT_EQ(version->productType, SystemVersion::DomainController);
    EXPECT_EQ(version->suiteMask, 0x402);
    EXPECT_TRUE(version->isServerR2);
    EXPECT_EQ(version->productInfo, 10u);
    EXPECT_EQ(version->nativeArchitecture, processor_architecture::Itanium);
    const ProcessorInfo processors = system.processors();
    EXPECT_EQ(processors.count, 7u);
    EXPECT_EQ(processors.level, 6);
    EXPECT_EQ(processors.revision, 0x5507);

    import(machine.registry(),
        current + "\"6.3\"\n\"CurrentMajorVersionNumber\"=dword:a\n\"CurrentMinorVersionNumber\"=dword:0\n");
    EXPECT_EQ(system.version()->major, 10u);
    EXPECT_FALSE(system.version()->isServerR2);
}

TEST(TreeMachineTest, FindsFilesAndTheirVersions)
{
    const TemporaryTree tree;
    tree.makeFolder(u"Emu/folder.exe"_s);
    for (const QString& name :
        {u"b.exe"_s, u"A.EXE"_s, u"c.exe.txt"_s, u"Z.dll"_s, u"_.exe"_s, u"Ä.exe"_s, u"a:b.exe"_s})
        tree.write(u"Emu/"_s + name, executableOf({{0x409, versionBlock(u"1.2 "_s + name)}}));
    QFile::link(u"/etc/passwd"_s, tree.host(u"Emu/out.exe"_s));
    TreeMachine machine(tree.root());
    Files& files = machine.files();
    EXPECT_EQ(*files.find(u"c:\\emu\\*.exe"), (QStringList{u"A.EXE"_s, u"b.exe"_s, u"_.exe"_s, u"Ä.exe"_s}));
    EXPECT_EQ(*files.find(u"C:\\Emu\\*.e*.t*"), QStringList(u"c.exe.txt"_s));
    ASSERT_TRUE(files.setCurrentDirectory(u"C:\\Emu"));
    EXPECT_EQ(*files.find(u"C:*.dll"), QStringList(u"Z.dll"_s));
    EXPECT_EQ(*files.fileVersion(u"C:\\EMU\\B.EXE"), u"1.2 b.exe");
    EXPECT_EQ(files.fileVersion(u"C:\\Emu\\folder.exe").errorNumber(), error::AccessDenied);
    EXPECT_EQ(files.fileVersion(u"C:\\Windows\\System32\\config\\SYSTEM").errorNumber(), error::BadExeFormat);
}

/// The service keys that hold an emulator instance.
QStringList instances(Registry& registry)
{
    QStringList names;
    const auto services = keyAt(registry, u"SYSTEM\\CurrentControlSet\\Services");
    for (quint32 i = 0; services; ++i) {
        const Result<QString> name = (*services)->subkeyName(i, 1023);
        if (!name)
            break;
        const auto key = (*services)->open(*name, key_access::AllAccess);
        const auto group = (*key)->text(u"Group", 1023);
        const auto parameters = (*key)->open(u"Parameters", key_access::AllAccess);
        if (group && *group == u"TargetPlatformEmulator" && parameters
            && (*parameters)->text(u"TargetPlatformEmulator", 1023))
            names.append(*name);
    }
    return names;
}

TEST(SampleMachineTest, IsWholeHoweverManyProgramsMakeIt)
{
    const QTemporaryDir parent;
    const QString folder = parent.filePath(u"data/QuorilManager/machine"_s);
    std::vector<pid_t> makers;
    for (int i = 0; i < 16; ++i) {
        const pid_t pid = ::fork();
        if (pid == 0) {
            int argc = 0;
            const QCoreApplication application(argc, nullptr);
            ::_exit(int(createSampleMachine(folder).errorNumber()));
        }
        makers.push_back(pid);
    }
    std::map<int, int> results;
    for (const pid_t pid : makers) {
        int status = -1;
        ::waitpid(pid, &status, 0);
        ++results[WEXITSTATUS(status)];
    }
    EXPECT_EQ(results, (std::map<int, int>{{0, 1}, {int(error::FileExists), 15}}));
    EXPECT_EQ(QDir(parent.filePath(u"data/QuorilManager"_s))
                  .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
        QStringList{u"machine"_s});

    TreeMachine machine(folder);
    EXPECT_EQ(instances(machine.registry()),
        (QStringList{u"CERES"_s, u"HEBE"_s, u"IRIS"_s, u"JUNO"_s, u"PALLAS"_s, u"Vesta-Speicher"_s,
            u"Vesta-Überwachung"_s}));
    const auto log = machine.files().openForReading(u"C:\\emulators\\ceres\\CERES.LOG");
    ASSERT_TRUE(log);
    const QStringList lines = textOf((*log)->readAll()).split(u"\r\n"_s);
    EXPECT_EQ(QStringView(lines[0]).mid(15, 7), u":INFO :");
    EXPECT_EQ(QStringView(lines[0]).mid(24, 8), u"00000249");
    EXPECT_EQ(QStringView(lines[0]).mid(52), u"Start of session: CERES");
}

TEST(MachineChoiceTest, TakesTheFirstThatIsNamed)
{
    int argc = 0;
    const QCoreApplication application(argc, nullptr);
    const QTemporaryDir data;
    qputenv("XDG_DATA_HOME", data.path().toLocal8Bit());
    qputenv("QUORIL_MACHINE", "/from/environment");
    EXPECT_EQ(chooseMachine(u"/from/option"_s).folder, u"/from/option");
    EXPECT_EQ(chooseMachine({}).folder, u"/from/environment");
    qputenv("QUORIL_MACHINE", "");
    const MachineChoice none = chooseMachine({});
    EXPECT_TRUE(none.origin == MachineChoice::Origin::Environment && none.folder.isEmpty());
    EXPECT_EQ(openMachine(none)->files().openForWriting(u"C:\\x").errorNumber(), error::FileNotFound);
    qunsetenv("QUORIL_MACHINE");
    const MachineChoice user = chooseMachine({});
    EXPECT_EQ(user.folder, data.filePath(u"QuorilManager/machine"_s));
    EXPECT_EQ(instances(openMachine(user)->registry()).size(), 7);

    const auto missing = openMachine({data.filePath(u"missing"_s), MachineChoice::Origin::Option});
    EXPECT_EQ(keyAt(missing->registry(), u"SYSTEM").errorNumber(), error::FileNotFound);
    EXPECT_EQ(*(*missing->registry().localMachine())->subkeyName(0, 99), u"HARDWARE");
    EXPECT_FALSE(QFile::exists(data.filePath(u"missing"_s)));
}

} // namespace

} // namespace quoril::test
