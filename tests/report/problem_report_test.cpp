// The whole road of a problem report, from the service to the file and what stays behind.

#include "report/problem_report.h"

#include "report/attachment_file.h"
#include "report/report_text.h"
#include "services/service_info.h"
#include "support/event_log_samples.h"
#include "support/fake_machine.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <optional>

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/resource.h>
#endif

namespace quoril::test {
namespace {

const QString HardwareEnd
    = u"-------------------- End of hardware configuration --------------------\r\n\r\n"_s;
const QString LogBegin = u"-------------------- Windows Application Log --------------------\r\n"_s;
const QString SystemLogEnd
    = u"-------------------- End of the Windows System Log --------------------\r\n\r\n"_s;
const QString RegistryEnd
    = u"-------------------- End of the service configuration (registry) --------------------\r\n\r\n"_s;

/// A temporary directory that is the user's own for the time being.
class ProblemReportTest : public testing::Test
{
protected:
    ProblemReportTest()
    {
        useTemporaryDirectory(m_folder.filePath(u"tmp"_s));
        m_machine.addInstance(u"Alpha"_s);
        m_service.Name = u"Alpha"_s;
    }
    ~ProblemReportTest() override
    {
        if (m_before.isNull())
            qunsetenv(Variable);
        else
            qputenv(Variable, m_before);
    }

    void useTemporaryDirectory(const QString& path)
    {
        QDir().mkpath(path);
        qputenv(Variable, QFile::encodeName(QDir::toNativeSeparators(path)));
    }
    QStringList temporaryFiles() const
    {
        return QDir(m_folder.filePath(u"tmp"_s)).entryList(QDir::Files | QDir::System | QDir::Hidden);
    }

    /// Writes the report, with something done at the moment of the question; what was shown.
    std::string mail(const QString& path, const std::function<void()>& meanwhile = {})
    {
        m_machine.calls.takeLog();
        mailProblemReport(m_service, m_prompts, [&](const QString& proposed) {
            EXPECT_EQ(proposed, u"QuorilMailReport.txt"_s);
            if (meanwhile)
                meanwhile();
            return path;
        });
        return shown();
    }
    /// The messages since the last call, a line each.
    std::string shown()
    {
        const QString lines = m_machine.calls.takeLog().filter(u"message "_s).join(u'\n');
        return QString(lines).remove(u"message "_s).toStdString();
    }
    std::string stored(const QString& path) const
    {
        return "QUORIL Mail report successfully stored as a file \"" + path.toStdString() + "\".";
    }

#ifdef Q_OS_WIN
    static constexpr const char* Variable = "TMP";
#else
    static constexpr const char* Variable = "TMPDIR";
#endif
    const QByteArray m_before = qgetenv(Variable);
    QTemporaryDir m_folder;
    QString m_report = m_folder.filePath(u"report.txt"_s);
    FakeMachine m_machine;
    RecordingPrompts m_prompts{m_machine};
    ServiceInfo m_service;
};

TEST_F(ProblemReportTest, IsStoredWithoutWhatThereIsNot)
{
    // A service that is gone leaves the banners on one line.
    m_service = g_no_service;
    EXPECT_EQ(mail(m_report), stored(m_report));
    EXPECT_TRUE(textOfFile(m_report).endsWith(SystemLogEnd
        + u"\r\nEmulation type                           \r\nHome directory                           "
          u"\r\n\r\n\r\n"
          "\r\n-------------------- Service configuration (registry) --------------------"_s
        + RegistryEnd));

    m_machine.fakeRegistry.refuse(u"SYSTEM\\CurrentControlSet\\Services"_s, key_access::QueryValue);
    m_machine.fakeEventLogs.logs.clear();
    m_service.LogFile = u"C:\\none.log"_s;
    EXPECT_EQ(mail(m_report), stored(m_report));
    EXPECT_TRUE(textOfFile(m_report).endsWith(SystemLogEnd
        + u"-------------------- LOG --------------------\r\n"
          "Can't open QUORIL log file: \"C:\\none.log\"\r\n"
          "-------------------- End of the LOG --------------------\r\n"_s));
    EXPECT_EQ(temporaryFiles(), QStringList());
    EXPECT_EQ(m_machine.calls.open(), 0);
}

TEST_F(ProblemReportTest, HoldsTheEventsOfTheServicesPeriod)
{
    for (const quint32 time : {999u, 1000u, 2015u, 2016u, quint32(m_machine.fakeClock.now() - 180)})
        m_machine.fakeEventLogs.logs[u"Application"_s].push_back(
            eventOf(time, u"QUORIL"_s, {u"at %1"_s.arg(time)}));
    m_service.LogFrom = 1000;
    m_service.LogTo = 2000;
    EXPECT_EQ(mail(m_report), stored(m_report));
    EXPECT_TRUE(textOfFile(m_report).contains(LogBegin + u"at 1000\r\nat 2015\r\n----"_s));
}

TEST_F(ProblemReportTest, LeavesItsTemporaryFilesWhenNoReportIsMade)
{
    EXPECT_EQ(mail({}), "");
    const QStringList left = temporaryFiles();
    ASSERT_EQ(left.size(), 3);
    QList<int> numbers;
    for (const QString& name : left) {
        EXPECT_TRUE(name.startsWith(u"OperatorConsole"_s));
        numbers.append(name.mid(21).toInt());
#ifndef Q_OS_WIN // where the folder's rights decide
        EXPECT_EQ(QFile::permissions(m_folder.filePath(u"tmp/"_s + name))
                & (QFile::ReadGroup | QFile::ReadOther | QFile::WriteGroup | QFile::WriteOther),
            QFile::Permissions());
#endif
    }
    std::ranges::sort(numbers);
    EXPECT_EQ(numbers, QList<int>({numbers[0], numbers[0] + 1, numbers[0] + 2}));

    // A folder can't be replaced by a report. The next run's names carry higher numbers.
    EXPECT_EQ(mail(m_folder.path()), "Can't open output file.");
    EXPECT_EQ(temporaryFiles().size(), 6);
    EXPECT_EQ(temporaryFiles().filter(QRegularExpression(u"^.{21}%1$"_s.arg(numbers[0] + 5))).size(), 1);
}

TEST_F(ProblemReportTest, GoesOnWithoutATemporaryFileThatVanished)
{
    for (const qsizetype gone : {0, 1, 2}) {
        const std::string message = mail(m_report, [this, gone] {
            QStringList names = temporaryFiles();
            std::ranges::sort(names, {}, [](const QString& name) { return name.mid(21).toInt(); });
            EXPECT_TRUE(QFile::remove(m_folder.filePath(u"tmp/"_s + names.value(gone))));
        });
        EXPECT_EQ(message, "Can't open temporary data file.");
        EXPECT_EQ(temporaryFiles(), QStringList());
        const QString text = textOfFile(m_report);
        // The stages run in the order hardware, registry, log.
        EXPECT_EQ(text.contains(HardwareEnd), gone != 0);
        EXPECT_EQ(text.contains(RegistryEnd), gone != 1);
        EXPECT_EQ(text.contains(LogBegin), gone != 2);
    }
}

#ifdef Q_OS_LINUX

TEST_F(ProblemReportTest, ReportsThatThereIsNoPlaceForTemporaryFiles)
{
    QFile(m_folder.filePath(u"file"_s)).open(QIODevice::WriteOnly);
    const struct
    {
        QString directory;
        std::string message;
        quint32 hardware, log; // what the stages give
    } cases[] = {
        {m_folder.filePath(u"file/below"_s), "Can't create temporary attachment file.\n", error::PathNotFound,
            error::PathNotFound},
        {u"/proc"_s, "Can't create file for attachment.\n", error::AccessDenied, 1},
    };
    for (const auto& [directory, message, hardware, log] : cases) {
        useTemporaryDirectory(directory);
        EXPECT_EQ(mail(m_report) + '\n', message + message + message);
        EXPECT_TRUE(textOfFile(m_report).endsWith(u"(such as RDB, DEC Forms.):\r\n\r\n\r\n"));
        appMAPI report(m_prompts, {});
        QuorilMAPIData data;
        EXPECT_EQ(report.WriteHardwareSection(data), hardware);
        EXPECT_EQ(report.WriteRegistrySection(data), hardware);
        EXPECT_EQ(report.WriteLogSections(data), log);
    }
}

/// Files of this process end at so many bytes, as on a full disk.
class FullDisk
{
public:
    explicit FullDisk(qsizetype bytes)
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        m_handler = std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{rlim_t(bytes), m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    rlimit m_before{};
    void (*m_handler)(int);
};

TEST_F(ProblemReportTest, NeverCallsACutReportStored)
{
    const std::string thrice
        = "Can't write to output file.\nCan't write to output file.\nCan't write to output file.";
    EXPECT_EQ(mail(u"/dev/full"_s), thrice);
    EXPECT_EQ(temporaryFiles(), QStringList());

    // The form fits, the blocks don't.
    appMAPI form(m_prompts, {});
    form.BuildForm();
    const auto limit = 2 * form.FormText.size() + 10;
    std::optional<FullDisk> disk;
    EXPECT_EQ(mail(m_report, [&] { disk.emplace(limit); }), thrice);
    disk.reset();
    EXPECT_EQ(QFileInfo(m_report).size(), limit);
    EXPECT_EQ(temporaryFiles(), QStringList());

    // Only the temporary file of the logs is too long: nothing of it remains, and it is reported.
    m_machine.fakeFiles.put(u"C:\\a.log", QByteArray(100'000, '\1'));
    m_service.LogFile = u"C:\\a.log"_s;
    disk.emplace(10'000);
    EXPECT_EQ(mail(m_report), "Can't create file for attachment.");
    disk.reset();
    EXPECT_TRUE(textOfFile(m_report).contains(RegistryEnd) && !textOfFile(m_report).contains(LogBegin));
    EXPECT_EQ(temporaryFiles(), QStringList());
}

TEST_F(ProblemReportTest, WritesThroughNoLink)
{
    // Somebody who guesses a name can put a link there first: the file is not made.
    const QString victim = m_folder.filePath(u"victim"_s);
    const QString place = m_folder.filePath(u"tmp/OperatorConsoleabcdef1"_s);
    ASSERT_TRUE(QFile::link(victim, place));
    AttachmentFile file;
    EXPECT_EQ(file.create(place).errorNumber(), error::FileExists);
    EXPECT_FALSE(QFile::exists(victim));
    ASSERT_TRUE(QFile(victim).open(QIODevice::WriteOnly));
    EXPECT_EQ(file.create(place).errorNumber(), error::FileExists);
    EXPECT_EQ(file.create(victim).errorNumber(), error::FileExists);
}

#endif

TEST_F(ProblemReportTest, TakesTheLogsNameFromAConfigurationFile)
{
    m_machine.fakeFiles.put(u"C:\\e\\a.cfg", units(u"set session log = \"a.log\"\r\n"));
    m_machine.fakeFiles.put(u"C:\\e\\a.log", units(u"line\r\n"));
    m_machine.fakeFiles.put(u"C:\\e\\empty.cfg", {});
    const struct
    {
        QString configuration;
        quint32 result;
        QString log;
        std::string message;
    } cases[] = {
        {{}, 0, {}, ""},
        {u"C:\\e\\a.cfg"_s, 0, u"C:\\e\\a.log"_s, ""},
        {u"C:\\e\\empty.cfg"_s, 1, {}, ""},
        {u"C:\\e\\none.cfg"_s, 0, {}, "Can't open configuration file. C:\\e\\none.cfg"},
    };
    for (const auto& [configuration, result, log, message] : cases) {
        m_machine.calls.takeLog();
        appMAPI report(m_prompts, [](const QString&) { return QString(); });
        QuorilMAPIData data;
        data.ConfigFileName = configuration;
        EXPECT_EQ(report.WriteLogSections(data), result);
        EXPECT_TRUE(data.LogReady);
        EXPECT_EQ(data.LogFileName, log);
        EXPECT_EQ(data.LogFrom, m_machine.fakeClock.now() - 180);
        EXPECT_EQ(data.LogTo, data.LogFrom + 3);
        EXPECT_EQ(shown(), message);
        EXPECT_EQ(textOfFile(data.LogAttachment)
                      .endsWith(u"line\r\n-------------------- End of the LOG --------------------\r\n"),
            !log.isEmpty());
    }
}

TEST_F(ProblemReportTest, AppendsTheConfigurationFileWhenAsked)
{
    m_machine.fakeFiles.put(u"C:\\a.cfg", "one\r\ntwo");
    for (const QString& path : {u"C:\\a.cfg"_s, u"C:\\none.cfg"_s}) {
        appMAPI report(m_prompts, [this](const QString&) { return m_report; });
        QuorilMAPIData data;
        data.ConfigWanted = true;
        data.ConfigFileName = path;
        m_machine.calls.takeLog();
        report.SaveReport(data);
        const bool isThere = path == u"C:\\a.cfg"_s;
        EXPECT_EQ(shown(), isThere ? stored(m_report) : "Can't open temporary data file.");
        EXPECT_EQ(textOfFile(m_report),
            report.FormText + u"\r\n--------------------- Configuration file --------------------\r\n"_s
                + (isThere ? u"one\r\ntwo"_s : QString())
                + u"-------------------- End of Configuration file --------------------\r\n"_s);
        EXPECT_FALSE(data.ConfigWanted);
    }
}

} // namespace
} // namespace quoril::test
