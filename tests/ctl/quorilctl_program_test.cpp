// The program itself, on a sample machine with the real stand-in emulator.

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace quoril::test {
namespace {

using namespace Qt::StringLiterals;

class QuorilctlProgramTest : public testing::Test
{
protected:
    struct Run
    {
        int code = -1;
        QByteArray output;
        QByteArray errors;
    };

    ~QuorilctlProgramTest() override { run({u"stop"_s, u"DIANA"_s}); }

    Run run(const QStringList& arguments)
    {
        return finished(QStringLiteral(QUORIL_BIN_DIR "/quorilctl"),
            QStringList{u"--machine"_s, m_folder.filePath(u"demo"_s)} + arguments);
    }
    Run shell(const QString& script) { return finished(u"bash"_s, {u"-c"_s, script}); }
    Run install(const QString& subcommand, const QString& name, const QString& configuration = Configuration,
        const QString& executable = Executable)
    {
        return run({subcommand, u"--config"_s, configuration, u"--executable"_s, executable, u"--"_s, name});
    }

    static inline const QString Executable = u"C:\\Program Files\\Quoril\\quoril-emulator.exe"_s;
    static inline const QString Configuration = u"C:\\Program Files\\Quoril\\ceres.cfg"_s;
    QTemporaryDir m_folder;

private:
    Run finished(const QString& program, const QStringList& arguments)
    {
        QProcess process;
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"PATH"_s, QStringLiteral(QUORIL_BIN_DIR ":") + environment.value(u"PATH"_s));
        environment.remove(u"QUORIL_MACHINE"_s);
        environment.insert(u"LC_ALL"_s, u"C"_s);
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(m_folder.path());
        process.start(program, arguments);
        process.closeWriteChannel();
        EXPECT_TRUE(process.waitForFinished(60'000)) << qPrintable(arguments.join(u' '));
        return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
    }
};

/// The commands of the session in the README and what they print, with "$ " before each command.
QString readmeSession()
{
    QFile readme(QStringLiteral(QUORIL_SOURCE_DIR "/README.md"));
    EXPECT_TRUE(readme.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(readme.readAll());
    const qsizetype begin = text.indexOf(u"```console\n"_s) + 11;
    return text.mid(begin, text.indexOf(u"```\n"_s, begin) - begin);
}

TEST_F(QuorilctlProgramTest, TheReadmesSessionGoesAsItIsWritten)
{
    QString script = u"exec 2>&1\n"_s;
    for (const QString& line : readmeSession().split(u'\n')) {
        if (!line.startsWith(u"$ "_s))
            continue;
        const QString quoted = QString(line).replace(u'\'', u"'\\''"_s);
        script += u"printf '%s\\n' '"_s + quoted + u"'\n"_s + line.mid(2) + u'\n';
    }
    ASSERT_GE(script.count(u"quorilctl "_s), 20) << "a session of this many commands";
    EXPECT_EQ(shell(script).output.toStdString(), readmeSession().toStdString());
}

TEST_F(QuorilctlProgramTest, HostileNamesAndPathsChangeNothingOrArriveWhole)
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
    EXPECT_EQ(run({u"list"_s, u"--names"_s}).output, before);

    for (const QString& name :
        {u"-x"_s, u"a b; $(reboot) %PATH% 'c'"_s, u"Bücher 漢字"_s, QString(200, u'n')}) {
        EXPECT_EQ(install(u"install"_s, name).code, 0) << qPrintable(name);
        EXPECT_TRUE(run({u"list"_s, u"--names"_s}).output.split('\n').contains(name.toUtf8()));
        EXPECT_EQ(run({u"remove"_s, u"--yes"_s, u"--"_s, name}).code, 0) << qPrintable(name);
    }
}

TEST_F(QuorilctlProgramTest, AMachineIsMadeExportedAndImportedOnce)
{
    const QString demo = m_folder.filePath(u"demo"_s);
    const QString file = m_folder.filePath(u"ceres.reg"_s);
    const QString key = u"HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Services\\CERES"_s;
    EXPECT_EQ(run({u"list"_s}).errors,
        "The machine \"" + demo.toUtf8()
            + "\" can't be opened. Reason: The system cannot find the path specified.\n");
    EXPECT_EQ(run({u"machine"_s, u"create"_s, demo}).code, 0);
    EXPECT_EQ(run({u"machine"_s, u"create"_s, demo}).code, 1);
    EXPECT_EQ(run({u"machine"_s, u"export"_s, key, u"-o"_s, file}).code, 0);
    const QByteArray exported = run({u"machine"_s, u"export"_s, key}).output;
    EXPECT_TRUE(exported.startsWith("Windows Registry Editor Version 5.00\n\n[" + key.toUtf8() + "]\n"));
    EXPECT_EQ(run({u"remove"_s, u"--yes"_s, u"CERES"_s}).code, 0);
    EXPECT_EQ(run({u"machine"_s, u"export"_s, key}).code, 1);
    EXPECT_EQ(run({u"machine"_s, u"import"_s, file}).code, 0);
    EXPECT_EQ(run({u"machine"_s, u"export"_s, key}).output, exported);
    EXPECT_EQ(shell(u"quorilctl --machine demo list > /dev/full"_s).code, 1);
}

} // namespace
} // namespace quoril::test
