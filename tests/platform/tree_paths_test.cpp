#include "platform/tree/tree_paths.h"

#include "platform/host/file_lock.h"
#include "platform/host/host_file.h"
#include "support/temporary_tree.h"

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
        tree.makeFolder(u"made"_s);
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

TEST_F(TreePathsTest, TakesEveryFormOfAPathIntoTheTree)
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
        const Result<HostPlace> host = paths.existing(each.path);
        EXPECT_EQ(host.errorNumber(), each.number) << each.path;
        EXPECT_EQ(host ? host->path() : QString(), each.host) << each.path;
    }
    EXPECT_EQ(paths.forCreation(u"C:\\Dir\\new")->path(), tree.host(u"DIR/new"_s));
    EXPECT_EQ(paths.forCreation(u"C:\\dangling").errorNumber(), error::AccessDenied);
    EXPECT_EQ(*paths.absolute(u"..\\x/y"), u"C:\\x\\y");
    EXPECT_EQ(paths.machinePath(log), u"C:\\Windows\\Überwachung\\Log.TXT");
    EXPECT_EQ(paths.machinePath(tree.root() + u"/../else"_s), QString());
    EXPECT_EQ(paths.setCurrentDirectory(u"C:\\dir\\a").errorNumber(), 267u);
    EXPECT_EQ(
        expandMachineVariables(u"%systemroot%\\x %\u017FystemRoot%"), u"C:\\Windows\\x %\u017FystemRoot%");
}

TEST_F(TreePathsTest, OpensNothingButFilesOfTheTree)
{
    EXPECT_EQ((*files.openForReading(u"C:\\DIR\\B"))->readAll(), "b");
    EXPECT_EQ(files.openForReading(u"C:\\pipe").errorNumber(), error::AccessDenied);
    EXPECT_EQ(files.openForWriting(u"C:\\dangling").errorNumber(), error::AccessDenied);
    EXPECT_EQ(files.remove(u"C:\\dir").errorNumber(), error::AccessDenied);
}

TEST_F(TreePathsTest, ReachesNothingOutsideWhateverIsExchangedAfterTheLook)
{
    const QTemporaryDir outside;
    const HostPlace place = *paths.forCreation(u"C:\\dir\\new");
    ASSERT_TRUE(QFile::rename(tree.host(u"dir"_s), tree.host(u"moved"_s)));
    ASSERT_TRUE(QFile::link(outside.path(), tree.host(u"dir"_s)));
    EXPECT_TRUE(replaceFile(place, "x") && openRegularFile(place, HostOpen::Write));
    EXPECT_TRUE(FileLock::acquire(place.beside(u".lock"_s)) && makeHostFolder(place.beside(u"made"_s)));
    EXPECT_TRUE(renameHostFile(place, u"last"_s));
    EXPECT_TRUE(QDir(outside.path()).isEmpty());
    EXPECT_TRUE(QFile::exists(tree.host(u"moved/last"_s)) && QFile::exists(tree.host(u"moved/made"_s)));
    EXPECT_EQ(paths.forCreation(u"C:\\dir\\new").errorNumber(), error::AccessDenied);
}

TEST_F(TreePathsTest, GivesWhatIsMadeTheRightsOfItsFolderAndOfWhatItReplaces)
{
    const bool isRoot = ::getuid() == 0;
    const struct
    {
        mode_t folder, file, made, lock;
    } cases[] = {{0755, 0644, 0755, 0600}, {0770, 0660, 0770, 0660}, {01777, 0644, 0755, 0600}};
    for (const auto& each : cases) {
        const HostPlace place = *paths.forCreation(u"C:\\made\\file");
        const QByteArray folder = QFile::encodeName(place.folder.path());
        ASSERT_TRUE(::chmod(folder.constData(), each.folder) == 0
            && (!isRoot || ::chown(folder.constData(), 99, 98) == 0));
        EXPECT_TRUE(openRegularFile(place, HostOpen::Write) && makeHostFolder(place.beside(u"folder"_s)));
        EXPECT_TRUE(FileLock::acquire(place.beside(u"lock"_s)));
        for (const auto& [name, mode] :
            {std::pair("/file", each.file), {"/folder", each.made}, {"/lock", each.lock}}) {
            struct stat is = {};
            ASSERT_EQ(::stat((folder + name).constData(), &is), 0);
            EXPECT_EQ(is.st_mode & 07777, mode) << name << " in " << each.folder;
            EXPECT_TRUE(!isRoot || (is.st_uid == 99 && is.st_gid == 98)) << name;
        }
        QDir(tree.host(u"made"_s)).removeRecursively();
        tree.makeFolder(u"made"_s);
    }
    const HostPlace place = *paths.forCreation(u"C:\\made\\private");
    const QByteArray file = QFile::encodeName(place.path());
    tree.write(u"made/private"_s, "old");
    ASSERT_TRUE(::chmod(file.constData(), 0640) == 0 && (!isRoot || ::chown(file.constData(), 97, 96) == 0));
    EXPECT_TRUE(replaceFile(place, "new"));
    struct stat is = {};
    ASSERT_EQ(::stat(file.constData(), &is), 0);
    EXPECT_TRUE((is.st_mode & 07777) == 0640 && (!isRoot || (is.st_uid == 97 && is.st_gid == 96)));
}

} // namespace

} // namespace quoril::test
