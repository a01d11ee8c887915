#include "platform/host/posix/posix_session.h"

#include "platform/host/posix/language_names.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

#include <tuple>
#include <utility>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quoril::test {

namespace {

TEST(LanguageNamesTest, MapHostLocales)
{
    const std::pair<QStringView, QStringView> cases[] = {
        {u"C", u"ENU"},
        {u"POSIX", u"ENU"},
        {u"C.UTF-8", u"ENU"},
        {u"en_US.UTF-8", u"ENU"},
        {u"en_GB", u"ENG"},
        {u"de_DE@euro", u"DEU"},
        {u"de_AT.UTF-8", u"DEA"},
        {u"de_XX", u"DEU"},
        {u"pt_BR.UTF-8", u"PTB"},
        {u"pt", u"PTG"},
        {u"sr_RS@latin", u"SRL"},
        {u"sr_RS", u"SRB"},
        {u"zh_TW.Big5", u"CHT"},
        {u"zh", u"CHS"},
        {u"nn_NO", u"NON"},
        {u"tlh_XX", u""},
        {u"", u""},
    };
    for (const auto& [locale, name] : cases)
        EXPECT_EQ(windowsLanguageName(locale), name) << locale;

    // LC_ALL before LC_MESSAGES before LANG; LANGUAGE speaks only where they ask for a language at all.
    const std::tuple<const char*, const char*, const char*, const char*, QStringView> environments[] = {
        {"", "fr_CA.UTF-8", "ja_JP.UTF-8", "", u"FRC"},
        {"sv_SE.UTF-8", "fr_CA.UTF-8", "ja_JP.UTF-8", "", u"SVE"},
        {"", "", "en_US.UTF-8", "tlh:de_AT:en", u"DEA"},
        {"C.UTF-8", "", "en_US.UTF-8", "de", u"ENU"},
    };
    for (const auto& [all, messages, lang, list, name] : environments) {
        qputenv("LC_ALL", all);
        qputenv("LC_MESSAGES", messages);
        qputenv("LANG", lang);
        qputenv("LANGUAGE", list);
        EXPECT_EQ(windowsLanguageName(hostLocaleName(Locale::UserDefault)), name) << all << list;
    }
    qunsetenv("LANGUAGE");
}

class BroadcastTest : public testing::Test
{
protected:
    /// A program that subscribes and ends with 7 when it hears "wanted", and 1 when it hears anything else.
    pid_t listener()
    {
        int ready[2] = {};
        EXPECT_EQ(::pipe(ready), 0);
        const pid_t pid = ::fork();
        if (pid == 0) {
            int argc = 0;
            QCoreApplication application(argc, nullptr);
            BroadcastChannel channel(folder);
            const auto wanted = channel.subscribe(u"wanted", [] { ::_exit(7); });
            const auto other = channel.subscribe(u"other", [] { ::_exit(1); });
            QTimer::singleShot(20000, [] { ::_exit(2); });
            if (::write(ready[1], "", 1) == 1)
                QCoreApplication::exec();
            ::_exit(3);
        }
        char byte = 0;
        EXPECT_EQ(::read(ready[0], &byte, 1), 1);
        ::close(ready[0]);
        ::close(ready[1]);
        return pid;
    }
    static int endOf(pid_t pid)
    {
        int status = 0;
        ::waitpid(pid, &status, 0);
        return WEXITSTATUS(status);
    }
    QStringList sockets() const { return QDir(folder).entryList(QDir::System | QDir::Files); }

    QTemporaryDir parent;
    QString folder = parent.filePath(u"quoril"_s);
};

TEST_F(BroadcastTest, ReachesOtherProgramsAndThisOneBeforeItReturns)
{
    BroadcastChannel channel(folder);
    int heard = 0;
    const auto mine = channel.subscribe(u"wanted", [&] { ++heard; });
    auto gone = channel.subscribe(u"wanted", [&] { heard += 100; });
    gone.reset();
    const pid_t first = listener();
    const pid_t second = listener();
    channel.broadcast(u"unknown");
    channel.broadcast(u"wanted");
    EXPECT_EQ(heard, 1);
    EXPECT_EQ(endOf(first), 7);
    EXPECT_EQ(endOf(second), 7);
    // They ended without a word: the next message finds what they left and takes it away.
    EXPECT_EQ(sockets().size(), 3);
    channel.broadcast(u"wanted");
    EXPECT_EQ(sockets().size(), 1);
    EXPECT_EQ(heard, 2);
}

TEST_F(BroadcastTest, TrustsNoFolderOfOthers)
{
    ASSERT_TRUE(QDir().mkdir(folder));
    ::chmod(folder.toLocal8Bit().constData(), 0777);
    BroadcastChannel channel(folder);
    int heard = 0;
    const auto mine = channel.subscribe(u"wanted", [&] { ++heard; });
    channel.broadcast(u"wanted");
    EXPECT_EQ(heard, 1);
    EXPECT_TRUE(sockets().isEmpty());
}

TEST(PosixSessionTest, KeepsAMessageAmongTheProgramsOfItsTree)
{
    const QTemporaryDir runtime;
    qputenv("XDG_RUNTIME_DIR", runtime.path().toLocal8Bit());
    int argc = 0;
    QCoreApplication application(argc, nullptr);
    PosixSession one(u"/one"_s, nullptr);
    int heard = 0;
    const auto subscription = one.subscribe(u"m", [&] { heard += 1; });
    PosixSession(u"/other"_s, nullptr).broadcast(u"m", HungWindows::AreAwaited);
    PosixSession(u"/one"_s, nullptr).broadcast(u"m", HungWindows::AreAwaited); // comes after the other
    for (int i = 0; i < 2000 && heard == 0; ++i)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
    QCoreApplication::processEvents();
    EXPECT_EQ(heard, 1);
    qunsetenv("XDG_RUNTIME_DIR");
}

TEST(PosixSessionTest, HasNoWindowWithoutADisplayAndLocksNothingWithoutALock)
{
    qputenv("DISPLAY", "");
    PosixSession session({}, nullptr);
    EXPECT_EQ(session.lockWorkstation().errorNumber(), error::CallNotImplemented);
    EXPECT_FALSE(session.findWindow(u"Performance Monitor"));
    qputenv("DISPLAY", ":65000");
    EXPECT_FALSE(session.findWindow(u"Performance Monitor"));
}

} // namespace

} // namespace quoril::test
