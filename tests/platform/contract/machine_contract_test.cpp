// Processes, files, session and clock.

#include "formats/name_case.h"
#include "platform/contract/contract_machine.h"
#include "platform/event_logs.h"
#include "platform/system_info.h"
#include "support/executable_sample.h"

#include <QCoreApplication>
#include <QFile>

#include <algorithm>

namespace quoril::test {

namespace {

class MachineContract : public ContractTest
{
protected:
    quint32 write(const QString& path, const QByteArray& bytes)
    {
        const auto file = machine.files().openForWriting(path);
        return file && (*file)->write(bytes) == bytes.size() ? 0 : file.errorNumber();
    }
    /// A file of the host may hold back what it was given.
    static void flush(QIODevice& device)
    {
        if (auto* file = qobject_cast<QFileDevice*>(&device))
            file->flush();
    }
    QByteArray read(const QString& path)
    {
        const auto file = machine.files().openForReading(path);
        return file ? (*file)->readAll() : QByteArray("error ") + QByteArray::number(file.errorNumber());
    }
    QString in(QStringView name) const { return contract->folder() + u'\\' + name.toString(); }
};

TEST_F(MachineContract, RunsProgramsAndGivesTheirExitCode)
{
    const std::pair<QString, quint32> cases[] = {{u" --help"_s, 0}, {u" --die many"_s, 1}};
    for (const auto& [arguments, code] : cases) {
        const auto process = machine.processes().create({}, contract->emulator() + arguments);
        ASSERT_TRUE(process);
        ASSERT_TRUE((*process)->wait(30000));
        EXPECT_EQ(*(*process)->exitCode(), code);
    }
    const auto endless = machine.processes().create({}, contract->endlessProgram());
    ASSERT_TRUE(endless);
    EXPECT_FALSE((*endless)->wait(20));
    EXPECT_EQ(*(*endless)->exitCode(), StillActive);
    EXPECT_TRUE((*endless)->terminate(42));
    EXPECT_TRUE((*endless)->wait(10000));
    EXPECT_EQ(*(*endless)->exitCode(), 42u);
    // Wine lets a process end twice.
    EXPECT_EQ(
        (*endless)->terminate(1).errorNumber(), contract->isWine() ? error::Success : error::AccessDenied);

    ASSERT_EQ(write(in(u"data.exe"), "no program, whatever its name says"), 0u);
    EXPECT_EQ(machine.processes().create({}, in(u"data.exe")).errorNumber(), error::BadExeFormat);
    const std::pair<QString, quint32> fitness[] = {{contract->emulator(), error::Success},
        {in(u"data.exe"), error::BadExeFormat}, {in(u"nothing.exe"), error::FileNotFound}};
    for (const auto& [program, number] : fitness)
        // Wine has a number of its own for what is no program.
        EXPECT_EQ(machine.processes().canRun(program).errorNumber(),
            number == error::BadExeFormat && contract->isWine() ? 31 : number)
            << program;

    const auto [application, line] = contract->systemProgram();
    const auto byName = machine.processes().create(application, line);
    ASSERT_TRUE(byName);
    EXPECT_TRUE((*byName)->wait(30000));
    EXPECT_EQ(*(*byName)->exitCode(), 3u);
    EXPECT_EQ(machine.processes().create(u"no-such.exe", u"x").errorNumber(), error::FileNotFound);
    EXPECT_EQ(machine.processes().create({}, in(u"nothing.exe x")).errorNumber(), error::FileNotFound);
    // To Wine a missing folder is a missing file.
    EXPECT_EQ(machine.processes().create({}, u"C:\\no-folder\\x.exe").errorNumber(),
        contract->isWine() ? error::FileNotFound : error::PathNotFound);

    // Nothing is looked for in the current folder.
    ASSERT_TRUE(machine.files().setCurrentDirectory(contract->folder()));
    for (const QStringView name : {u"data.exe", u"data", u".\\data.exe"})
        for (const QStringView given : {QStringView(), name})
            EXPECT_EQ(machine.processes().create(given, name).errorNumber(), error::FileNotFound);
    EXPECT_TRUE(machine.files().setCurrentDirectory(u"C:\\"));
}

TEST_F(MachineContract, SharesAFileWithWhoeverWritesOrRemovesIt)
{
    Files& files = machine.files();
    const auto writer = files.openForWriting(in(u"Log.txt"));
    ASSERT_TRUE(writer);
    ASSERT_EQ((*writer)->write("one\r\n"), 5);
    flush(**writer);
    const auto reader = files.openForReading(in(u"LOG.TXT").replace(u'\\', u'/'));
    ASSERT_TRUE(reader);
    EXPECT_EQ((*reader)->readAll(), "one\r\n");
    ASSERT_EQ((*writer)->write("two"), 3);
    flush(**writer);
    EXPECT_EQ((*reader)->readAll(), "two");
    EXPECT_EQ((*reader)->size(), 8);
    ASSERT_TRUE((*reader)->seek(3));
    EXPECT_EQ((*reader)->read(3), "\r\nt");
    EXPECT_TRUE(files.remove(in(u"log.txt")));
    (*writer)->close();
    (*reader)->close();
    EXPECT_EQ(files.remove(in(u"log.txt")).errorNumber(), error::FileNotFound);
}

TEST_F(MachineContract, ReportsWhatAFileLacks)
{
    Files& files = machine.files();
    EXPECT_EQ(files.openForReading(in(u"none")).errorNumber(), error::FileNotFound);
    EXPECT_EQ(files.openForReading(in(u"none\\none")).errorNumber(), error::PathNotFound);
    EXPECT_EQ(files.openForReading(contract->folder()).errorNumber(), error::AccessDenied);
    EXPECT_EQ(files.openForWriting(in(u"none\\none")).errorNumber(), error::PathNotFound);
    EXPECT_EQ(files.openForReading(in(u"a<b")).errorNumber(), error::InvalidName);
    EXPECT_EQ(files.find(in(u"*.dll")).errorNumber(), error::FileNotFound);
    EXPECT_EQ(files.find(in(u"none\\*.dll")).errorNumber(), error::PathNotFound);
}

TEST_F(MachineContract, FindsFilesAndKnowsItsFolder)
{
    Files& files = machine.files();
    for (const QStringView name : {u"b.exe", u"A.EXE", u"c.dll", u"_.exe"})
        ASSERT_EQ(write(in(name), name.toUtf8()), 0u);
    QStringList found = *files.find(in(u"*.exe"));
    if (contract->isWine()) // whose order is that of the host
        std::ranges::sort(found, [](const QString& a, const QString& b) { return foldedCompare(a, b) < 0; });
    EXPECT_EQ(found, (QStringList{u"A.EXE"_s, u"b.exe"_s, u"_.exe"_s}));
    ASSERT_TRUE(files.setCurrentDirectory(contract->folder()));
    EXPECT_EQ(*files.find(u"?.DLL"), QStringList{u"c.dll"_s});
    EXPECT_EQ(read(u"B.exe"_s), "b.exe");
    ASSERT_TRUE(files.hostPath(u"b.exe"));
    EXPECT_EQ(files.machinePath(*files.hostPath(u"b.exe"))->toLower(), in(u"b.exe").toLower());
    EXPECT_EQ(files.hostPath(u"none").errorNumber(), error::FileNotFound);
    EXPECT_EQ(files.setCurrentDirectory(in(u"none")).errorNumber(), error::FileNotFound);
    // The folder goes at the end, which must not be anybody's current one.
    EXPECT_TRUE(files.setCurrentDirectory(u"C:\\"));
}

TEST_F(MachineContract, ReadsTheVersionOfAnExecutable)
{
    ASSERT_EQ(write(in(u"v.exe"), executableOf({{0x409, versionBlock(u"1.2 test")}})), 0u);
    ASSERT_EQ(write(in(u"none.exe"), executableOf({})), 0u);
    ASSERT_EQ(write(in(u"text.exe"), "no executable"), 0u);
    const auto version = machine.files().fileVersion(in(u"V.EXE"));
    ASSERT_TRUE(version) << version.errorNumber();
    EXPECT_EQ(*version, u"1.2 test");
    EXPECT_EQ(machine.files().fileVersion(in(u"missing.exe")).errorNumber(), error::FileNotFound);
    for (const QStringView name : {u"none.exe", u"text.exe"})
        EXPECT_FALSE(machine.files().fileVersion(in(name))) << name;
}

TEST_F(MachineContract, KeepsWhatIsReported)
{
    if (contract->isWine())
        GTEST_SKIP() << "Wine's event logs keep nothing";
    EventEntry sent;
    sent.sourceName = u"QuorilContract"_s;
    sent.eventId = 0xC0000007;
    sent.eventType = event_type::Warning;
    sent.eventCategory = 3;
    sent.timeGenerated = sent.timeWritten = quint32(machine.clock().now());
    sent.insertStrings.append(u"first");
    sent.insertStrings.append(u"");
    sent.insertStrings.append(u"\u00DCber");
    ASSERT_TRUE(machine.eventLogs().report(u"Application", sent));
    const qint64 time = sent.timeGenerated;
    const auto log = machine.eventLogs().open(u"Application", {time - 1, time + 60});
    ASSERT_TRUE(log);
    EventEntry read;
    bool isFound = false;
    while (!isFound && (*log)->next(read))
        isFound = read.sourceName == sent.sourceName;
    ASSERT_TRUE(isFound);
    EXPECT_EQ(read.insertStrings.toList(), sent.insertStrings.toList());
    EXPECT_EQ(read.eventId, sent.eventId);
    EXPECT_EQ(read.eventType, sent.eventType);
    EXPECT_EQ(read.eventCategory, sent.eventCategory);
    const auto later = machine.eventLogs().open(u"Application", {time + 3600, time + 7200});
    ASSERT_TRUE(later);
    EXPECT_FALSE((*later)->next(read));
}

TEST_F(MachineContract, KnowsItsSystem)
{
    const SystemInfo& system = machine.systemInfo();
    EXPECT_EQ(system.windowsDirectory().toLower(), u"c:\\windows");
    EXPECT_GE(system.processors().count, 1u);
    const auto memory = system.physicalMemory();
    EXPECT_TRUE(memory && *memory > 1U << 24);
    const auto name = system.computerName();
    EXPECT_TRUE(name && !name->isEmpty() && name->size() <= 255);
    EXPECT_TRUE(system.errorText(5).endsWith(u"\r\n"_s));
    EXPECT_EQ(system.errorText(0xEFFFFFFF), QString());
    // Texts that ask for an insert. Wine's have none.
    if (!contract->isWine()) {
        EXPECT_EQ(system.errorText(193) + system.errorText(216), QString());
    }
    EXPECT_EQ(system.programVersion(u"no such program"_s).errorNumber(), error::FileNotFound);
}

TEST_F(MachineContract, HearsItsOwnBroadcastBeforeItReturns)
{
    int argc = 0;
    const QCoreApplication application(argc, nullptr);
    Session& session = machine.session();
    int heard = 0;
    auto first = session.subscribe(u"QuorilContractWanted", [&] { ++heard; });
    const auto other = session.subscribe(u"QuorilContractOther", [&] { heard += 100; });
    ASSERT_TRUE(first && other);
    session.broadcast(u"QuorilContractWanted", HungWindows::AreAwaited);
    EXPECT_EQ(heard, 1);
    session.broadcast(u"QuorilContractWanted", HungWindows::ArePassedOver);
    EXPECT_EQ(heard, 2);
    first.reset();
    session.broadcast(u"QuorilContractWanted", HungWindows::AreAwaited);
    EXPECT_EQ(heard, 2);
    EXPECT_FALSE(session.findWindow(u"no window of this title"));
}

TEST_F(MachineContract, KeepsTime)
{
    Clock& clock = machine.clock();
    const quint64 before = clock.tickCount();
    clock.sleep(30);
    EXPECT_GE(clock.tickCount(), before + 29);
    EXPECT_GT(clock.now(), 1'700'000'000);
    EXPECT_EQ(clock.timerInterval(1), 10);
    EXPECT_EQ(clock.timerInterval(0xFFFFFFFF), 0x7FFFFFFF);
}

} // namespace

} // namespace quoril::test
