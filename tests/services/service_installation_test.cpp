#include "services/service_installation.h"

#include "services/installer_command_line.h"
#include "support/fake_machine.h"

#include <functional>

namespace quoril::test {

using namespace std::string_literals;

namespace {

const QString Image = u"C:\\Program Files\\Quoril\\emulator.exe"_s;
const QString Configuration = u"C:\\cfg\\juno.cfg"_s;

/// A machine with the stopped instance "JUNO" of the product "sample", whose executable succeeds.
struct Bench
{
    FakeMachine machine;
    RecordingPrompts prompts{machine};
    FakeServiceControl::Script& juno{
        machine.addInstance(u"JUNO"_s, {u"RpcSs"_s, u"Tcpip"_s, u"WorkSpace"_s})};

    Bench()
    {
        machine.fakeProcesses.exitCode = 0xFFFFFFFF;
        machine.calls.takeLog();
    }
    /// What was told, run and changed, in its order.
    std::string log()
    {
        QStringList kept;
        for (const QString& call : machine.calls.takeLog()) {
            for (const QStringView word : {u"message ", u"delete ", u"change directory ", u"create ",
                     u"broadcast ", u"changeConfig "}) {
                if (call.startsWith(word))
                    kept.append(call);
            }
        }
        return kept.join(u'\n').toStdString();
    }
};

const char* const Road = "change directory C:\\\\Program Files\\\\Quoril\\\\\n"
                         "create |\"C:\\Program Files\\Quoril\\emulator.exe\" --install \"JUNO\" "
                         "\"C:\\cfg\\juno.cfg\"\n";
const char* const Announcement
    = "broadcast WM_NEW_SERVICE_INSTALLED_MSG\nchangeConfig JUNO dependencies=rpcss|tcpip";
const std::string Failed = "message QUORIL service installation failed.";

} // namespace

TEST(ServiceInstallation, EachEndHasItsMessagesItsResultAndItsStep)
{
    const auto exits
        = [](quint32 code) { return [code](Bench& bench) { bench.machine.fakeProcesses.exitCode = code; }; };
    const struct
    {
        const char* what;
        InstallRequest request;
        std::function<void(Bench&)> prepare;
        InstallStep step;
        int result;
        std::string log;
    } cases[] = {
        {"no name", {{}, Configuration, true, Image}, {}, InstallStep::Arguments, 0, ""},
        {"no configuration", {u"JUNO"_s, {}, true, {}}, {}, InstallStep::Arguments, 0, ""},
        {"no executable", {u"JUNO"_s, Configuration, true, {}}, {}, InstallStep::ImagePath, -1,
            "message Can't find path for QUORIL executable."},
        {"unknown service", {u"IRIS"_s, Configuration, true, Image}, {}, InstallStep::Removal, -1,
            "message The service is not installed yet.\n" + Failed},
        {"running service", {u"JUNO"_s, Configuration, true, Image},
            [](Bench& bench) { bench.juno.states = {service_state::Running}; }, InstallStep::Removal, -1,
            "message Failed to remove a service. The service is still running.\n" + Failed},
        {"no folder", {u"JUNO"_s, Configuration, true, u"C:\\gone\\x.exe"_s},
            [](Bench& bench) { bench.machine.fakeFiles.addMissingFolder(u"C:\\\\gone\\\\"); },
            InstallStep::Directory, -1,
            "delete JUNO\nchange directory C:\\\\gone\\\\\n"
            "message Can't change directory. Destination directory: \"C:\\\\gone\\\\\""},
        {"no process", {u"JUNO"_s, Configuration, false, Image},
            [](Bench& bench) { bench.machine.fakeProcesses.createError = error::AccessDenied; },
            InstallStep::Executable, 2,
            Road
                + "message CreateProcess failed. Command line: \"\"C:\\Program Files\\Quoril\\emulator.exe\" "
                  "--install \"JUNO\" \"C:\\cfg\\juno.cfg\"\"\n"s
                + Failed + " Reason: File not found. (0x2)"},
        {"exit code 0", {u"JUNO"_s, Configuration, false, Image}, exits(0), InstallStep::Executable, 0,
            Road + Failed + " Reason: 0x0"},
        {"refused in an update", {u"JUNO"_s, Configuration, true, Image}, exits(5), InstallStep::Executable,
            5, "delete JUNO\n" + std::string(Road) + Failed + " Reason: Access is denied. (0x5)"},
        {"runs on", {u"JUNO"_s, Configuration, false, Image},
            [](Bench& bench) { bench.machine.fakeProcesses.runsFor = 30001; }, InstallStep::Executable, 259,
            Road + Failed + " Reason: 0x103"},
        {"installed", {u"JUNO"_s, Configuration, false, Image}, {}, InstallStep::Done, -1,
            Road + "message QUORIL service installed successfully.\n"s + Announcement},
        {"installed without dependencies", {u"JUNO"_s, Configuration, false, Image},
            [](Bench& bench) {
                bench.machine.fakeRegistry.load(
                    u"[SYSTEM\\CurrentControlSet\\Services\\JUNO]\nDependOnService=multi:"_s);
            },
            InstallStep::Done, -1,
            Road + "message QUORIL service installed successfully.\n"s
                + "broadcast WM_NEW_SERVICE_INSTALLED_MSG\nchangeConfig JUNO dependencies="},
        {"updated, quoted already", {u"JUNO"_s, Configuration, true, u'"' + Image + u'"'}, {},
            InstallStep::Done, -1,
            // Here nothing registers the service anew, whose dependencies could be written.
            "delete JUNO\n" + std::string(Road)
                + "message QUORIL service updated successfully.\nbroadcast WM_NEW_SERVICE_INSTALLED_MSG"},
    };
    for (const auto& [what, request, prepare, step, result, log] : cases) {
        Bench bench;
        if (prepare)
            prepare(bench);
        const InstallOutcome outcome = ServiceApp().InstallService(request, bench.prompts);
        EXPECT_EQ(outcome.step, step) << what;
        EXPECT_EQ(outcome.result, result) << what;
        EXPECT_EQ(bench.log(), log) << what;
        EXPECT_EQ(bench.machine.calls.open(), 0) << what;
    }
}

TEST(ServiceInstallation, TheFolderIsSplitOffAsTheRunTimeLibraryDoes)
{
    const std::pair<QString, QString> cases[] = {
        {u"x.exe"_s, u""_s},
        {u"C:x.exe"_s, u"C:"_s},
        {u"\\a b\\x"_s, u"\\\\a b\\\\"_s},
        {u"C:/a\\b/x.exe"_s, u"C:/a\\\\b/"_s},
        {u"C:\\"_s + QString(300, u'd') + u"\\x.exe"_s, u"C:\\\\"_s + QString(254, u'd')},
    };
    for (const auto& [image, folder] : cases) {
        Bench bench;
        (void)ServiceApp().InstallService({u"JUNO"_s, Configuration, false, image}, bench.prompts);
        EXPECT_EQ(bench.machine.fakeFiles.currentDirectory.toStdString(), folder.toStdString());
    }
}

TEST(ServiceInstallation, TheDependencyListIsRewrittenOrLeftAlone)
{
    const QString key = u"[SYSTEM\\CurrentControlSet\\Services\\JUNO]\n"_s;
    const struct
    {
        QString registry;
        QString service;
        int result;
        QString list;
    } cases[] = {
        {key + u"DependOnService=multi:RpcSs|TCPIP|\u0130Äther|workspace|wor\u212Aspace"_s, u"JUNO"_s, 0,
            u"rpcss|\u0130äther|wor\u212Aspace|tcpip"_s},
        {key + u"DependOnService=multi:Tcpip|Workspace"_s, u"JUNO"_s, 0, u"tcpip"_s},
        {key + u"DependOnService=multi:"_s, u"JUNO"_s, 0, {}},
        {{}, u"Juno"_s, 0, {}}, // case counts
        {key + u"Group=other"_s, u"JUNO"_s, 0, {}},
        // 498 bytes, 12 of "tcpip" and 2 of the last zero fill the buffer.
        {key + u"DependOnService=multi:"_s + QString(248, u'x'), u"JUNO"_s, 0,
            QString(248, u'x') + u"|tcpip"_s},
        {key + u"DependOnService=multi:"_s + QString(249, u'x'), u"JUNO"_s, -1, {}},
        {key + u"DependOnService=multi:y|"_s + QString(255, u'x'), u"JUNO"_s, -1, {}},
        {key + u"DependOnService=multi:"_s + QString(2048, u'x'), u"JUNO"_s, -1, {}},
    };
    for (const auto& [registry, service, result, list] : cases) {
        Bench bench;
        bench.machine.fakeRegistry.load(registry);
        EXPECT_EQ(ServiceApp().BuildDependencyList(service), result) << registry.left(100);
        EXPECT_EQ(ServiceApp::dependencies().names().join(u'|').toStdString(), list.toStdString());
        EXPECT_EQ(bench.machine.calls.open(), 0);
    }
    Bench bench;
    ASSERT_TRUE(bench.machine.fakeRegistry.key(u"SYSTEM\\CurrentControlSet\\Services\\JUNO")
                    ->removeValue(u"DependOnService"));
    EXPECT_EQ(ServiceApp().BuildDependencyList(u"JUNO"_s), -1);
    bench.machine.fakeRegistry.refuse(u"SYSTEM"_s, key_access::SetValue);
    EXPECT_EQ(ServiceApp().BuildDependencyList(u"JUNO"_s), -1);
    QStringList names{u"old"_s};
    EXPECT_EQ(ServiceApp().ListProductServices(u"sample"_s, names), -1);
    EXPECT_TRUE(names.isEmpty());
}

TEST(ServiceInstallation, AProductsServicesAreFoundByTheirType)
{
    Bench bench;
    for (const auto& [name, type] : {std::pair(u"ZETA"_s, u"quoril_x_32"_s), {u"BLANK"_s, u"quoril x 32"_s},
             {u"ALPHA"_s, u"Quoril_X_32"_s}, {u"OTHER"_s, u"quoril_x_64"_s},
             {u"DOTLESS"_s, u"quor\u0131l_x_32"_s}}) {
        bench.machine.addInstance(name);
        bench.machine.fakeRegistry.load(
            u"[SYSTEM\\CurrentControlSet\\Services\\%1\\Parameters]\nTargetPlatformEmulator=%2"_s.arg(
                name, type));
    }
    bench.machine.fakeRegistry.load(u"[SYSTEM\\CurrentControlSet\\Services\\ZETA]\nGroup=other"_s);
    bench.machine.addInstance(u"LAST"_s);
    bench.machine.fakeRegistry.load(
        u"[SYSTEM\\CurrentControlSet\\Services\\LAST\\Parameters]\nTargetPlatformEmulator=QUORIL_x_32"_s);
    QStringList names;
    EXPECT_EQ(ServiceApp().ListProductServices(u"Quoril X 32"_s, names), 0);
    EXPECT_EQ(names, QStringList({u"ALPHA"_s, u"LAST"_s}));
    EXPECT_EQ(ServiceApp().ListProductServices(u"Quoril"_s, names), 0);
    EXPECT_TRUE(names.isEmpty());
}

TEST(InstallerCommandLine, RefusesWhatItCannotCarryBeforeAnythingIsChanged)
{
    const QString quoteAtEnd = QString(31'998, u'n') + u"\"\""_s;
    const struct
    {
        QString name, configuration, image;
        QString refusal; // empty for what is carried
    } cases[] = {
        {u"JUNO"_s, Configuration, u'"' + Image + u'"', {}},
        {u"JU NO & %x% \\\\ö"_s, Configuration, Image, {}},
        {quoteAtEnd, Configuration, Image, u"service name*double quote"_s},
        {u"J\" --x"_s, Configuration, Image, u"service name*double quote"_s},
        {u"JUNO\\"_s, Configuration, Image, u"service name*backslash"_s},
        {u"JU\nNO"_s, Configuration, Image, u"service name*control"_s},
        {u"JUNO"_s, u"C:\\cfg\\"_s, Image, u"configuration file*backslash"_s},
        {u"JUNO"_s, u"\"C:\\a.cfg\""_s, Image, u"configuration file*double quote"_s},
        {u"JUNO"_s, Configuration, u'"' + Image, u"executable*double quote"_s},
        {u"JUNO"_s, Configuration, u"\"C:\\a.exe\" --x \"\""_s, u"executable*double quote"_s},
        {u"JUNO"_s, Configuration, u"\""_s, u"executable*double quote"_s},
        {u"JUNO"_s, Configuration, u"\"C:\\a\\\""_s, u"executable*backslash"_s},
        {QString(32'766, u'n'), Configuration, Image, u"too long"_s},
    };
    for (const auto& [name, configuration, image, refusal] : cases) {
        Bench bench;
        const std::string told = unsafeArgument({name, configuration, true, image}).toStdString();
        for (const QString& part : refusal.split(u'*'))
            EXPECT_THAT(told, testing::HasSubstr(part.toStdString()));
        EXPECT_EQ(told.empty(), refusal.isEmpty()) << told;
        const InstallOutcome outcome
            = CheckedInstaller().InstallService({name, configuration, true, image}, bench.prompts);
        const std::string log = bench.log();
        EXPECT_EQ(log == "message " + told, !refusal.isEmpty()) << log.substr(0, 200);
        EXPECT_EQ(outcome.step == InstallStep::Refused, !refusal.isEmpty()) << log;
    }
    Bench bench;
    bench.machine.fakeProcesses.unfitError = error::AccessDenied;
    (void)CheckedInstaller().InstallService(
        {u"JUNO"_s, Configuration, true, u'"' + Image + u'"'}, bench.prompts);
    EXPECT_EQ(bench.log(), Failed + " Reason: Access is denied. (0x5)");
    // The longest line that Windows takes.
    const qsizetype rest = Configuration.size() + Image.size() + 18;
    EXPECT_EQ(unsafeArgument({QString(32'766 - rest, u'n'), Configuration, false, Image}), QString());
    EXPECT_NE(unsafeArgument({QString(32'767 - rest, u'n'), Configuration, false, Image}), QString());
}

} // namespace quoril::test
