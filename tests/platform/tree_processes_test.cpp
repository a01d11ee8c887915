#include "platform/tree/tree_processes.h"

#include "platform/command_line.h"
#include "support/temporary_tree.h"

#include <QScopeGuard>

#include <chrono>
#include <csignal>
#include <thread>
#include <unistd.h>

namespace quoril::test {

namespace {

TEST(CommandLineTest, SplitsAsTheRunTimeLibraryDoes)
{
    struct Case
    {
        QStringView line;
        QStringList arguments;
    };
    const Case cases[] = {
        {u"", {}},
        {u"  a.exe\tb  c ", {u"a.exe"_s, u"b"_s, u"c"_s}},
        {u"\"C:\\a b\\c.exe\" --install \"my service\" \"C:\\x y\\f.cfg\"",
            {u"C:\\a b\\c.exe"_s, u"--install"_s, u"my service"_s, u"C:\\x y\\f.cfg"_s}},
        {u"a \"b\\\\\" c\\d \"e\\\"f\" g\\\\\\\"h \"\"",
            {u"a"_s, u"b\\"_s, u"c\\d"_s, u"e\"f"_s, u"g\\\"h"_s, u""_s}},
        {u"a \"b\"\"c\" d\"e f\"g \"open end", {u"a"_s, u"b\"c"_s, u"de fg"_s, u"open end"_s}},
    };
    for (const Case& each : cases)
        EXPECT_EQ(splitCommandLine(each.line), each.arguments) << each.line;
}

class TreeProcessesTest : public testing::Test
{
protected:
    void SetUp() override
    {
        tree.makeFolder(u"Program Files/Quoril"_s);
        tree.program(u"Program Files/Quoril/Tool.exe"_s,
            "printf '%s|' \"$@\" > \"$QUORIL_MACHINE/out\"; pwd >> \"$QUORIL_MACHINE/out\"; exit ${2:-0}\n");
        tree.program(u"Windows/System32/sleep.exe"_s, "exec sleep 30\n");
        tree.program(u"plain.exe"_s, "");
        tree.write(u"plain.exe"_s,
            "\x7f"
            "ELF nothing of the kind");
    }

    /// The exit code of the finished program.
    quint32 run(QStringView line)
    {
        const auto process = machine.processes().create({}, line);
        EXPECT_TRUE(process);
        return process && (*process)->wait(10000) ? *(*process)->exitCode() : StillActive;
    }

    TemporaryTree tree;
    TreeMachine machine{tree.root()};
};

TEST_F(TreeProcessesTest, RunsAProgramByItsMachinePath)
{
    ASSERT_TRUE(machine.files().setCurrentDirectory(u"C:\\program files\\quoril"));
    EXPECT_EQ(run(u"\"C:\\PROGRAM FILES\\quoril\\tool.exe\" \"a b\" 7"), 7u);
    EXPECT_EQ(tree.read(u"out"_s), "a b|7|" + tree.host(u"Program Files/Quoril"_s).toUtf8() + "\n");
    EXPECT_EQ(run(u"C:\\Program Files\\Quoril\\Tool x 255 ü"), 0xFFFFFFFFu);
    EXPECT_TRUE(tree.read(u"out"_s).startsWith("x|255|\xc3\xbc|"));
}

TEST_F(TreeProcessesTest, ReportsWhyAProgramDoesNotRun)
{
    struct Case
    {
        QStringView line;
        quint32 number;
    };
    const Case cases[] = {
        {u"C:\\plain.exe", error::BadExeFormat},
        {u"\"C:\\Program Files\"", error::FileNotFound},
        {u"", error::FileNotFound},
    };
    for (const Case& each : cases)
        EXPECT_EQ(machine.processes().create({}, each.line).errorNumber(), each.number) << each.line;
    EXPECT_EQ(machine.processes().create(u"C:\\Windows", u"x").errorNumber(), error::AccessDenied);
}

TEST_F(TreeProcessesTest, TakesTheDesktopsMonitorWhereTheTreeHasNoneThatRunsHere)
{
    const QByteArray before = qgetenv("PATH");
    const auto restore = qScopeGuard([&] { qputenv("PATH", before); });
    qputenv("PATH", tree.host(u"bin"_s).toLocal8Bit());
    const auto start = [this](const QString& root) {
        TreeMachine there(root);
        const auto process = there.processes().create(u"perfmon.exe", u"perfmon.exe");
        return process && (*process)->wait(10000) ? *(*process)->exitCode() : process.errorNumber();
    };
    tree.program(u"Windows/System32/perfmon.exe"_s, "exit 6\n");
    EXPECT_EQ(start(tree.root()), 6u);
    tree.write(u"Windows/System32/perfmon.exe"_s, "MZ\x90 of another system");
    EXPECT_EQ(start(tree.root()), error::FileNotFound);
    EXPECT_EQ(start(tree.host(u"none"_s)), error::FileNotFound);
    tree.makeFolder(u"bin"_s);
    tree.program(u"bin/lxtask"_s, "exit 7\n");
    EXPECT_EQ(start(tree.root()), 7u);
}

TEST_F(TreeProcessesTest, TakesTheWholeExitCodeOfAProgramThatGivesItAndThatOfASignal)
{
    const struct
    {
        QByteArray script;
        quint32 code;
    } cases[] = {
        {"echo 1073 >&$QUORIL_EXIT_CODE_FD; exit 49\n", 1073},
        {"echo 4294967295 >&3; exit 255\n", 0xFFFFFFFF},
        {"echo 255 >&3; exit 255\n", 255},
        {"echo 1073 >&3; exit 7\n", 7}, // not what it ended with
        {"echo -1 >&3; exit 7\n", 7},
        {"echo 99999999999999999999 >&3; exit 7\n", 7},
        {"kill -SEGV $$\n", 0xC0000005},
        {"kill -TERM $$\n", 0xC000013A},
        {"kill -KILL $$\n", 1},
    };
    for (const auto& [script, code] : cases) {
        tree.program(u"code.exe"_s, script);
        EXPECT_EQ(run(u"C:\\code.exe"), code) << script;
    }
}

TEST_F(TreeProcessesTest, LeavesNoZombieOfAProcessThatItLetGo)
{
    tree.program(u"short.exe"_s, "echo $$ > \"$QUORIL_MACHINE/pid\"; exec sleep 0.1\n");
    {
        const auto process = machine.processes().create({}, u"C:\\short");
        ASSERT_TRUE(process);
        for (int i = 0; i < 500 && !tree.read(u"pid"_s).endsWith('\n'); ++i)
            EXPECT_FALSE((*process)->wait(5));
    }
    const auto pid = static_cast<pid_t>(tree.read(u"pid"_s).trimmed().toInt());
    ASSERT_GT(pid, 0);
    bool isGone = false;
    for (int i = 0; i < 1000 && !isGone; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        isGone = ::kill(pid, 0) != 0;
    }
    EXPECT_TRUE(isGone);
}

} // namespace

} // namespace quoril::test
