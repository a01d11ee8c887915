#pragma once

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace quoril::test {

using namespace Qt::StringLiterals;

/// The program itself, on a machine of its own below m_folder.
class QuorilctlProgramTest : public testing::Test
{
protected:
    struct Run
    {
        int code = -1;
        QByteArray output;
        QByteArray errors;
    };

    Run run(const QStringList& arguments)
    {
        return finished(QStringLiteral(QUORIL_BIN_DIR "/quorilctl"),
            QStringList{u"--machine"_s, m_folder.filePath(u"demo"_s)} + arguments);
    }
    Run finished(const QString& program, const QStringList& arguments)
    {
        QProcess process;
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(
            u"PATH"_s, QStringLiteral(QUORIL_BIN_DIR) + QDir::listSeparator() + environment.value(u"PATH"_s));
        environment.remove(u"QUORIL_MACHINE"_s);
        environment.insert(u"LC_ALL"_s, u"C"_s);
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(m_folder.path());
        process.start(program, arguments);
        process.closeWriteChannel();
        EXPECT_TRUE(process.waitForFinished(60'000)) << qPrintable(arguments.join(u' '));
        return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
    }
    Run install(const QString& subcommand, const QString& name, const QString& configuration = Configuration,
        const QString& executable = Executable)
    {
        return run({subcommand, u"--config"_s, configuration, u"--executable"_s, executable, u"--"_s, name});
    }

    static inline const QString Executable = u"C:\\Program Files\\Quoril\\quoril-emulator.exe"_s;
    static inline const QString Configuration = u"C:\\Program Files\\Quoril\\ceres.cfg"_s;
    QTemporaryDir m_folder;
};

} // namespace quoril::test
