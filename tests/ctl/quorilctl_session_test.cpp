// Sessions of a shell, with services that run.

#include "ctl/quorilctl_program.h"

#include <QFile>

namespace quoril::test {
namespace {

class QuorilctlSessionTest : public QuorilctlProgramTest
{
protected:
    ~QuorilctlSessionTest() override { run({u"stop"_s, u"DIANA"_s}); }

    Run shell(const QString& script) { return finished(u"bash"_s, {u"-c"_s, script}); }
};

/// The commands of the session in docs/quorilctl.md and what they print, with "$ " before each command.
QString documentedSession()
{
    QFile document(QStringLiteral(QUORIL_SOURCE_DIR "/docs/quorilctl.md"));
    EXPECT_TRUE(document.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(document.readAll());
    const qsizetype begin = text.indexOf(u"```console\n"_s) + 11;
    return text.mid(begin, text.indexOf(u"```\n"_s, begin) - begin);
}

TEST_F(QuorilctlSessionTest, TheDocumentedSessionGoesAsItIsWritten)
{
    QString script = u"exec 2>&1\n"_s;
    for (const QString& line : documentedSession().split(u'\n')) {
        if (!line.startsWith(u"$ "_s))
            continue;
        const QString quoted = QString(line).replace(u'\'', u"'\\''"_s);
        script += u"printf '%s\\n' '"_s + quoted + u"'\n"_s + line.mid(2) + u'\n';
    }
    ASSERT_GE(script.count(u"quorilctl "_s), 20) << "a session of this many commands";
    EXPECT_EQ(shell(script).output, documentedSession().toUtf8());
}

TEST_F(QuorilctlSessionTest, HostileNamesAndPathsChangeNothingOrArriveWhole)
{
    ASSERT_EQ(run({u"machine"_s, u"create"_s, m_folder.filePath(u"demo"_s)}).code, 0);
    const QByteArray before = run({u"list"_s, u"--names"_s}).output;
    const QString endless = QString(31'990, u'x') + u"\"\"\"\"\"\"\"\"\"\""_s;
    for (const QString& text : {u""_s, u"a\"b"_s, u"a\\"_s, u"a\nb"_s, u"\" --die 3 \""_s, u"..\\..\\x\\"_s,
             u"a/b"_s, QString(32'000, u'x'), endless}) {
        const auto name = qPrintable(text.left(40));
        for (const QString& subcommand : {u"install"_s, u"update"_s}) {
            EXPECT_NE(install(subcommand, text).code, 0) << name;
            EXPECT_NE(install(subcommand, u"CERES"_s, text).code, 0) << name;
            EXPECT_NE(install(subcommand, u"CERES"_s, Configuration, text).code, 0) << name;
        }
    }
    // Folders are found too late if a service is removed first.
    EXPECT_NE(install(u"update"_s, u"CERES"_s, u"C:\\Windows"_s).code, 0);
    EXPECT_NE(install(u"update"_s, u"CERES"_s, Configuration, u"C:\\Program Files"_s).code, 0);
    EXPECT_EQ(run({u"list"_s, u"--names"_s}).output, before);

    for (const QString& name :
        {u"-x"_s, u"a b; $(reboot) %PATH% 'c'"_s, u"Bücher 漢字"_s, QString(200, u'n')}) {
        EXPECT_EQ(install(u"install"_s, name).code, 0) << name;
        EXPECT_TRUE(run({u"list"_s, u"--names"_s}).output.split('\n').contains(name.toUtf8()));
        EXPECT_EQ(run({u"remove"_s, u"--yes"_s, u"--"_s, name}).code, 0) << name;
    }
    EXPECT_EQ(shell(u"quorilctl --machine demo list > /dev/full"_s).code, 1);
}

TEST_F(QuorilctlSessionTest, WhatIsNoFileStaysWhatItIs)
{
    ASSERT_EQ(run({u"machine"_s, u"create"_s, m_folder.filePath(u"demo"_s)}).code, 0);
    const std::pair<QString, QByteArray> cases[] = {
        {u"mkfifo p; cat p > got & demo machine export 'SYSTEM\\Select' -o p && wait && test -p p && test -s got"_s,
            ""},
        {u"demo machine export 'SYSTEM\\Select' -o /dev/null && test -c /dev/null"_s, ""},
        {u"ln -s out QuorilMailReport.txt; ! demo report CERES && test ! -e out"_s, "is a link"},
        {u"! demo machine import /dev/zero"_s, "256 MB"},
        {u"! (ulimit -f 1; demo machine export SYSTEM -o big); test $? = 0"_s, "\"big\" can't be written"},
        {u"! QUORIL_MACHINE= quorilctl list"_s, "QUORIL_MACHINE"},
        {u"mkdir victim; touch victim/x; ln -s victim X.new; quorilctl machine create X && ls victim/x X/Windows"_s,
            "System32"},
    };
    for (const auto& [script, says] : cases) {
        const Run done
            = shell(u"exec 2>&1; export XDG_DATA_HOME=$PWD; demo() { quorilctl --machine demo \"$@\"; }\n"_s
                + script);
        EXPECT_EQ(done.code, 0) << script << done.output;
        EXPECT_TRUE(done.output.contains(says)) << script << done.output;
    }
}

TEST_F(QuorilctlSessionTest, NoPathCommandsTheTerminal)
{
    ASSERT_EQ(run({u"machine"_s, u"create"_s, m_folder.filePath(u"demo"_s)}).code, 0);
    const QByteArray says
        = shell(u"export QUORIL_MACHINE=$'d\\e[2J\\xe2\\x80\\xae\\xc2\\x9b' LC_ALL=C.UTF-8\n"
                "script -qec 'quorilctl list' /dev/null\n"
                "mv demo \"$QUORIL_MACHINE\" && cd \"$QUORIL_MACHINE\"/Windows/System32/config\n"
                "rm SYSTEM && mkdir SYSTEM && cd - && script -qec 'quorilctl list' /dev/null"_s)
              .output;
    EXPECT_GE(says.count("d\\u001b[2J\\u202e\\u009b"), 2) << says;
    EXPECT_FALSE(says.contains("\x1b[2J") || says.contains("\u202e") || says.contains("\u009b"));
}

} // namespace
} // namespace quoril::test
