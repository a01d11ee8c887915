#include "services/service_installation.h"

#include "services/installer_command_line.h"
#include "support/service_bench.h"

namespace quoril::test {

namespace {

const QString Image = u"C:\\Program Files\\Quoril\\emulator.exe"_s;
const QString Configuration = u"C:\\cfg\\quoril1.cfg"_s;
const QString Key = u"[SYSTEM\\CurrentControlSet\\Services\\Quoril1]\n"_s;
const QString Failed = u"message QUORIL service installation failed."_s;

/// What was shown, run and changed, in its order.
QString eventsOn(ServiceBench& bench)
{
    return bench.log(u"^(message|delete|change directory|create|broadcast|changeConfig) "_s);
}

} // namespace

TEST(ServiceInstallation, EachEndHasItsMessagesItsResultAndItsStep)
{
    const InstallRequest install{u"Quoril1"_s, Configuration, false, Image};
    const InstallRequest update{u"Quoril1"_s, Configuration, true, u'"' + Image + u'"'};
    const QString commandLine
        = u"\"C:\\Program Files\\Quoril\\emulator.exe\" --install \"Quoril1\" \"C:\\cfg\\quoril1.cfg\""_s;
    const QString folder = u"C:\\\\Program Files\\\\Quoril\\\\"_s;
    const QString run = u"change directory "_s + folder + u"\ncreate |"_s + commandLine + u'\n';
    const QString announced = u"successfully.\nbroadcast WM_NEW_SERVICE_INSTALLED_MSG"_s;
    const struct
    {
        InstallRequest request;
        std::function<void(ServiceBench&)> prepare;
        InstallStep step;
        int result;
        QString events;
    } cases[] = {
        {{{}, Configuration, true, Image}, {}, InstallStep::Arguments, 0, {}},
        {{u"Quoril1"_s, {}, true, {}}, {}, InstallStep::Arguments, 0, {}},
        {{u"Quoril1"_s, Configuration, true, {}}, {}, InstallStep::ImagePath, -1,
            u"message Can't find path for QUORIL executable."_s},
        {{u"IRIS"_s, Configuration, true, Image}, {}, InstallStep::Removal, -1,
            u"message The service is not installed yet.\n"_s + Failed},
        {update, [](ServiceBench& bench) { bench.script.states = {service_state::Running}; },
            InstallStep::Removal, -1,
            u"message Failed to remove a service. The service is still running.\n"_s + Failed},
        {update, [&](ServiceBench& bench) { bench.fakeFiles.addMissingFolder(folder); },
            InstallStep::Directory, -1,
            u"delete Quoril1\nchange directory "_s + folder
                + u"\nmessage Can't change directory. Destination directory: \""_s + folder + u'"'},
        {install, [](ServiceBench& bench) { bench.fakeProcesses.createError = error::AccessDenied; },
            InstallStep::Executable, 2,
            run + u"message CreateProcess failed. Command line: \""_s + commandLine + u"\"\n"_s + Failed
                + u" Reason: File not found. (0x2)"_s},
        {install, [](ServiceBench& bench) { bench.fakeProcesses.exitCode = 0xBEEF; }, InstallStep::Executable,
            0xBEEF, run + Failed + u" Reason: 0xBEEF"_s},
        {install, [](ServiceBench& bench) { bench.fakeProcesses.exitCode = 0; }, InstallStep::Executable, 0,
            run + Failed + u" Reason: 0x0"_s},
        {update, [](ServiceBench& bench) { bench.fakeProcesses.exitCode = 5; }, InstallStep::Executable, 5,
            u"delete Quoril1\n"_s + run + Failed + u" Reason: Access is denied. (0x5)"_s},
        {install, [](ServiceBench& bench) { bench.fakeProcesses.runsFor = 30001; }, InstallStep::Executable,
            259, run + Failed + u" Reason: 0x103"_s},
        {install, {}, InstallStep::Done, -1,
            run + u"message QUORIL service installed "_s + announced
                + u"\nchangeConfig Quoril1 dependencies=rpcss|tcpip"_s},
        {install, [](ServiceBench& bench) { bench.fakeRegistry.load(Key + u"DependOnService=multi:"_s); },
            InstallStep::Done, -1,
            run + u"message QUORIL service installed "_s + announced
                + u"\nchangeConfig Quoril1 dependencies="_s},
        // Nothing registers the service anew here, whose dependencies could be written.
        {update, {}, InstallStep::Done, -1,
            u"delete Quoril1\n"_s + run + u"message QUORIL service updated "_s + announced},
    };
    for (const auto& [request, prepare, step, result, events] : cases) {
        ServiceBench bench({u"RpcSs"_s, u"Tcpip"_s, u"WorkSpace"_s});
        if (prepare)
            prepare(bench);
        const InstallOutcome outcome = bench.app.InstallService(request, bench.prompts);
        EXPECT_EQ(std::pair(outcome.step, outcome.result), std::pair(step, result)) << events;
        EXPECT_EQ(eventsOn(bench), events);
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
        ServiceBench bench;
        (void)bench.app.InstallService({u"Quoril1"_s, Configuration, false, image}, bench.prompts);
        EXPECT_EQ(bench.fakeFiles.currentDirectory, folder);
    }
}

TEST(ServiceInstallation, TheDependencyListIsRewrittenOrLeftAlone)
{
    const struct
    {
        QString values; ///< of the instance's key
        int result;
        QString list;
        QString service = u"Quoril1"_s;
    } cases[] = {
        {u"DependOnService=multi:RpcSs|TCPIP|\u0130Äther|workspace|wor\u212Aspace"_s, 0,
            u"rpcss|\u0130äther|wor\u212Aspace|tcpip"_s},
        {u"DependOnService=multi:Tcpip|Workspace"_s, 0, u"tcpip"_s},
        {u"DependOnService=multi:"_s, 0, {}},
        {{}, 0, {}, u"quoril1"_s}, // case counts
        {u"Group=other"_s, 0, {}},
        // 498 bytes, 12 of "tcpip" and 2 of the last zero fill the buffer.
        {u"DependOnService=multi:"_s + QString(248, u'x'), 0, QString(248, u'x') + u"|tcpip"_s},
        {u"DependOnService=multi:"_s + QString(249, u'x'), -1, {}},
        {u"DependOnService=multi:y|"_s + QString(255, u'x'), -1, {}},
        {u"DependOnService=multi:"_s + QString(2048, u'x'), -1, {}},
    };
    for (const auto& [values, result, list, service] : cases) {
        ServiceBench bench({u"Pre"_s});
        bench.fakeRegistry.load(Key + values);
        EXPECT_EQ(bench.app.BuildDependencyList(service), result) << values.left(100);
        EXPECT_EQ(ServiceApp::dependencies().names().join(u'|'), list);
    }
    ServiceBench bench;
    bench.fakeRegistry.refuse(u"SYSTEM"_s, key_access::SetValue);
    EXPECT_EQ(bench.app.BuildDependencyList(u"Quoril1"_s), -1);
    QStringList names{u"old"_s};
    EXPECT_EQ(bench.app.ListProductServices(u"sample"_s, names), -1);
    EXPECT_TRUE(names.isEmpty());
}

TEST(ServiceInstallation, AProductsServicesAreFoundByTheirType)
{
    ServiceBench bench;
    for (const auto& [name, type] : {std::pair(u"ZETA"_s, u"quoril_x_32"_s), {u"BLANK"_s, u"quoril x 32"_s},
             {u"ALPHA"_s, u"Quoril_X_32"_s}, {u"OTHER"_s, u"quoril_x_64"_s},
             {u"DOTLESS"_s, u"quor\u0131l_x_32"_s}, {u"LAST"_s, u"QUORIL_x_32"_s}}) {
        bench.addInstance(name);
        bench.fakeRegistry.load(
            u"[SYSTEM\\CurrentControlSet\\Services\\%1\\Parameters]\nTargetPlatformEmulator=%2"_s.arg(
                name, type));
    }
    bench.fakeRegistry.load(u"[SYSTEM\\CurrentControlSet\\Services\\ZETA]\nGroup=other"_s);
    QStringList names;
    EXPECT_EQ(bench.app.ListProductServices(u"Quoril X 32"_s, names), 0);
    EXPECT_EQ(names, QStringList({u"ALPHA"_s, u"LAST"_s}));
    EXPECT_EQ(bench.app.ListProductServices(u"Quoril"_s, names), 0);
    EXPECT_TRUE(names.isEmpty());
}

TEST(InstallerCommandLine, RefusesWhatItCannotCarryBeforeAnythingIsChanged)
{
    const struct
    {
        QString name, configuration, image;
        QString refusal; // a pattern; empty for what is carried
    } cases[] = {
        {u"Quoril1"_s, Configuration, u'"' + Image + u'"', {}},
        {u"JU NO & %x% \\\\ö"_s, Configuration, Image, {}},
        {QString(31'998, u'n') + u"\"\""_s, Configuration, Image, u"service name.*double quote"_s},
        {u"J\" --x"_s, Configuration, Image, u"service name.*double quote"_s},
        {u"JUNO\\"_s, Configuration, Image, u"service name.*backslash"_s},
        {u"JU\nNO"_s, Configuration, Image, u"service name.*control"_s},
        {u"JUNO"_s, u"C:\\cfg\\"_s, Image, u"configuration file.*backslash"_s},
        {u"JUNO"_s, u"\"C:\\a.cfg\""_s, Image, u"configuration file.*double quote"_s},
        {u"JUNO"_s, Configuration, u'"' + Image, u"executable.*double quote"_s},
        {u"JUNO"_s, Configuration, u"\"C:\\a.exe\" --x \"\""_s, u"executable.*double quote"_s},
        {u"JUNO"_s, Configuration, u"\""_s, u"executable.*double quote"_s},
        {u"JUNO"_s, Configuration, u"\"C:\\a\\\""_s, u"executable.*backslash"_s},
        {QString(32'766, u'n'), Configuration, Image, u"too long"_s},
    };
    for (const auto& [name, configuration, image, refusal] : cases) {
        ServiceBench bench;
        const InstallRequest request{name, configuration, true, image};
        const QString fault = unsafeArgument(request);
        EXPECT_EQ(fault.isEmpty(), refusal.isEmpty()) << fault;
        EXPECT_TRUE(fault.contains(QRegularExpression(refusal))) << fault;
        const InstallStep step = CheckedInstaller().InstallService(request, bench.prompts).step;
        EXPECT_EQ(step == InstallStep::Refused, !refusal.isEmpty());
        EXPECT_EQ(step == InstallStep::Done, name == u"Quoril1");
        const QString events = eventsOn(bench);
        EXPECT_EQ(events == u"message "_s + fault, !refusal.isEmpty()) << events.left(200);
    }
    ServiceBench bench;
    bench.fakeProcesses.unfitError = error::AccessDenied;
    (void)CheckedInstaller().InstallService(
        {u"Quoril1"_s, Configuration, true, u'"' + Image + u'"'}, bench.prompts);
    EXPECT_EQ(eventsOn(bench), Failed + u" Reason: Access is denied. (0x5)"_s);
    // The longest line that Windows takes.
    const qsizetype rest = Configuration.size() + Image.size() + 18;
    EXPECT_EQ(unsafeArgument({QString(32'766 - rest, u'n'), Configuration, false, Image}), QString());
    EXPECT_NE(unsafeArgument({QString(32'767 - rest, u'n'), Configuration, false, Image}), QString());
}

} // namespace quoril::test
