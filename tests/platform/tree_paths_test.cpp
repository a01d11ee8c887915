#include "platform/tree/tree_paths.h"

#include "support/temporary_tree.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace quoril::test {

namespace {

class TreePathsTest : public testing::Test
{
protected:
    void SetUp() override
    {
        tree.makeFolder(u"Windows/Überwachung"_s);
        tree.makeFolder(u"dir"_s);
        tree.makeFolder(u"DIR"_s);
        tree.write(u"Windows/Überwachung/Log.TXT"_s, "log");
        tree.write(u"dir/a"_s, "a");
        tree.write(u"DIR/b"_s, "b");
        ::symlink("/etc", tree.host(u"out"_s).toLocal8Bit().constData());
        ::symlink("../dir", tree.host(u"Windows/in"_s).toLocal8Bit().constData());
        ::symlink("/nowhere/file", tree.host(u"dangling"_s).toLocal8Bit().constData());
        ::mkfifo(tree.host(u"pipe"_s).toLocal8Bit().constData(), 0600);
    }

    TemporaryTree tree;
    TreePaths paths{tree.root()};
    TreeFiles files{paths};
};

TEST_F(TreePathsTest, takesEveryFormOfAPathIntoTheTree)
{
    ASSERT_TRUE(paths.setCurrentDirectory(u"c:\\WINDOWS"));
    const QString log = tree.host(u"Windows/Überwachung/Log.TXT"_s);
    struct Case
    {
        QStringView path;
        QString host;
        quint32 number = 0;
    };
    const Case cases[] = {
        {u"C:\\windows\\ÜBERWACHUNG\\log.txt", log},
        {u"c:/Windows//überwachung/./LOG.txt. ", log},
        {u"\\SystemRoot\\Überwachung\\Log.TXT", log},
        {u"\\??\\C:\\Windows\\Überwachung\\Log.TXT", log},
        {u"\\\\?\\C:\\Windows\\Überwachung\\Log.TXT", log},
        {u"\\Windows\\Überwachung\\Log.TXT", log},
        {u"überwachung\\log.txt", log},
        {u"C:überwachung\\log.txt", log},
        {u"C:\\..\\..\\Windows\\nothing\\..\\Überwachung\\log.txt", log},
        {u"C:\\dir\\a", tree.host(u"dir/a"_s)},
        {u"C:\\D\u0131R\\b", {}, error::PathNotFound},
        {u"C:\\DIR\\b", tree.host(u"DIR/b"_s)},
        {u"in\\a", tree.host(u"dir/a"_s)},
        {u"C:", tree.host(u"Windows"_s)},
        {u"C:\\", tree.root()},
        {u"C:\\mi\u017F\u017Fing", {}, error::FileNotFound}, // long s is another letter
        {u"\\\u017FystemRoot\\Überwachung", {}, error::PathNotFound},
        {u"C:\\missing\\file", {}, error::PathNotFound},
        {u"C:\\dir\\a\\b", {}, error::PathNotFound},
        {u"D:\\dir\\a", {}, error::PathNotFound},
        {u"\\\\server\\share\\a", {}, error::PathNotFound},
        {u"", {}, error::PathNotFound},
        {u"C:\\dir\\a:stream", {}, error::InvalidName},
        {u"C:\\di?\\a", {}, error::InvalidName},
        {u"C:\\dir\\a\u0001", {}, error::InvalidName},
        {u"C:\\out\\passwd", {}, error::AccessDenied},
        {u"C:\\dangling", {}, error::AccessDenied},
    };
    for (const Case& each : cases) {
        const Result<QString> host = paths.existing(each.path);
        EXPECT_EQ(host.errorNumber(), each.number) << qPrintable(each.path.toString());
        EXPECT_EQ(host ? *host : QString(), each.host) << qPrintable(each.path.toString());
    }
    EXPECT_EQ(*paths.forCreation(u"C:\\Dir\\new"), tree.host(u"DIR/new"_s));
    EXPECT_EQ(paths.forCreation(u"C:\\dangling").errorNumber(), error::AccessDenied);
    EXPECT_EQ(*paths.absolute(u"..\\x/y"), u"C:\\x\\y");
    EXPECT_EQ(paths.machinePath(log), u"C:\\Windows\\Überwachung\\Log.TXT");
    EXPECT_EQ(paths.machinePath(tree.root() + u"/../else"_s), QString());
    EXPECT_EQ(paths.setCurrentDirectory(u"C:\\dir\\a").errorNumber(), 267u);
    EXPECT_EQ(
        expandMachineVariables(u"%systemroot%\\x %\u017FystemRoot%"), u"C:\\Windows\\x %\u017FystemRoot%");
}

TEST_F(TreePathsTest, opensNothingButFilesOfTheTree)
{
    EXPECT_EQ((*files.openForReading(u"C:\\DIR\\B"))->readAll(), "b");
    EXPECT_EQ(files.openForReading(u"C:\\pipe").errorNumber(), error::AccessDenied);
    EXPECT_EQ(files.openForWriting(u"C:\\dangling").errorNumber(), error::AccessDenied);
    {
        const auto written = files.openForWriting(u"C:\\Windows\\new.txt");
        ASSERT_TRUE(written);
        (*written)->write("new");
    }
    const auto open = files.openForReading(u"C:\\windows\\NEW.TXT");
    EXPECT_TRUE(files.remove(u"C:\\windows\\new.txt"));
    EXPECT_EQ((*open)->readAll(), "new");
    EXPECT_EQ(files.remove(u"C:\\windows\\new.txt").errorNumber(), error::FileNotFound);
    EXPECT_EQ(files.remove(u"C:\\dir").errorNumber(), error::AccessDenied);
}

} // namespace

} // namespace quoril::test
