#include "resources/resource_module.h"
#include "services/service_app.h"
#include "services/service_info.h"
#include "support/fake_machine.h"

namespace quoril::test {

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr QStringView Services = u"SYSTEM\\CurrentControlSet\\Services";

/// A machine with the instance "Quoril1", stopped, and a record of it.
struct Bench
{
    FakeMachine machine;
    RecordingPrompts prompts{machine};
    FakeServiceControl::Script& script;
    ServiceInfo record;
    ServiceApp app;

    explicit Bench(const QStringList& prerequisites = {})
        : script(machine.addInstance(u"Quoril1"_s, prerequisites))
    {
        record.Name = u"Quoril1"_s;
        machine.fakeClock.setNow(5000);
        machine.calls.takeLog();
        machine.calls.failAt(0);
    }
    std::string log() { return machine.calls.takeLog().join(u'\n').toStdString(); }
    std::string message() const { return record.Message.toStdString(); }
    FakeServiceControl::Script& prerequisite(const QString& name, FakeServiceControl::States afterStart)
    {
        auto& made = machine.fakeServices.service(name);
        made.afterStart = std::move(afterStart);
        return made;
    }
};

/// Makes each platform call of an operation fail in turn: the outcome of each has to be the one that is
/// listed, and nothing may stay open. Behind the list the operation succeeds.
struct Outcome
{
    int result;
    const char* told; ///< the record's message, or what the log has to hold
};

void failEachCall(const std::vector<Outcome>& outcomes, const std::function<int(Bench&)>& operation)
{
    for (std::size_t n = 1; n <= outcomes.size() + 1; ++n) {
        Bench bench({u"Pre"_s});
        bench.prerequisite(u"Pre"_s, {service_state::StartPending, service_state::Running});
        bench.machine.calls.failAt(int(n));
        const int result = operation(bench);
        const bool last = n > outcomes.size();
        ASSERT_EQ(last, bench.machine.calls.count() < int(n)) << "call " << n;
        EXPECT_EQ(result, last ? 0 : outcomes[n - 1].result) << "call " << n;
        const std::string told = bench.message() + bench.log();
        EXPECT_THAT(told, HasSubstr(last ? "" : outcomes[n - 1].told)) << "call " << n;
        EXPECT_EQ(bench.machine.calls.open(), 0) << "call " << n;
    }
}

} // namespace

TEST(ServiceOperations, EveryFailingCallGivesItsTextAndLeavesNothingOpen)
{
    const char* manager = "SERVICE-MANAGER: Failed to connect to Service Control Manager";
    const char* service = "SERVICE-MANAGER: Failed to connect to service Quoril1";
    failEachCall(
        {{1, manager}, {1, service}, {1, "SERVICE-MANAGER: Failed to query status of service Quoril1"},
            {0, "queryConfig Quoril1"}},
        [](Bench& b) { return b.record.QueryState(); });
    failEachCall({{1, manager}, {1, service}, {1, "Failed to start the service \"Quoril1\""}},
        [](Bench& b) { return b.record.StartNow(); });
    failEachCall({{1, manager}, {1, service}, {1, "Failed to stop the service \"Quoril1\""}},
        [](Bench& b) { return b.record.StopNow(); });
    failEachCall({{1, manager}, {1, "SERVICE-MANAGER: Failed to lock a Service Database"}, {1, service},
                     {1, "SERVICE-MANAGER: Failed to reconfigurate service Quoril1"}},
        [](Bench& b) { return b.record.SetStartType(4, b.prompts); });
    failEachCall({{-1, ""}, {5, ""}, {0, "queryStatus Pre"}, {1, "Failed to start pre-requisite service"},
                     {0, ""}, {2, "sleep 1000"}},
        [](Bench& b) { return b.record.StartPrerequisite(u"Pre"_s, b.prompts); });
    // The walk: machine, SYSTEM, CurrentControlSet, Services, name, key, Group, DependOnService, then the
    // manager.
    failEachCall({{-1, ""}, {-1, ""}, {-1, ""}, {-1, ""}, {0, ""}, {0, ""}, {0, ""}, {-1, ""},
                     {-1, "manager"}, {5, "open Pre"}, {0, ""}, {1, "pre-requisite"}, {0, ""}, {2, ""}},
        [](Bench& b) { return b.record.StartPrerequisites(b.prompts); });
    failEachCall({{-1, ""}, {-2, ""}, {-5, ""}, {-6, ""}},
        [](Bench& b) { return b.app.SetDependencies(u"Quoril1"_s); });
    failEachCall(
        {{-1, "message Failed to connect to Service Control Manager. Reason: Access is denied. (0x5)"},
            {-1, "message Failed to connect to service. Reason: Access is denied. (0x5)"},
            {-1, "message Failed to query status of service. Reason: Access is denied. (0x5)"},
            {-1, "message Failed to remove a service."}},
        [](Bench& b) { return b.app.RemoveRegistration(u"Quoril1"_s, b.prompts); });
    // The walk to the instance and its type comes first; no failure of it is told apart.
    std::vector<Outcome> removal(9, {-1, "message The service is not installed yet."});
    for (const char* told : {"Control Manager. Reason: ", "connect to service. Reason: ",
             "query status of service. Reason: ", "message Failed to remove a service."})
        removal.push_back({-1, told});
    failEachCall(removal, [](Bench& b) { return b.app.RemoveService(u"quoril1"_s, false, b.prompts); });
    failEachCall({{2, "message CreateProcess failed. Command line: \"x --y\""}, {0, "wait 30000"}},
        [](Bench& b) { return RunProcess(u"x --y"_s, b.prompts); });
}

TEST(ServiceOperations, AskForTheLeastRightAndCloseInOrder)
{
    Bench bench;
    EXPECT_EQ(bench.record.QueryState(), 0);
    EXPECT_EQ(bench.log(),
        "manager 0xe0000000\nopen Quoril1 0x5\nclose manager\nqueryStatus Quoril1\nqueryConfig Quoril1");
    EXPECT_EQ(bench.record.StartNow(), 0);
    EXPECT_EQ(bench.log(), "manager 0xe0000000\nopen Quoril1 0x10\nclose manager\nstart Quoril1");
    EXPECT_EQ(bench.record.StopNow(), 0);
    EXPECT_EQ(bench.log(), "manager 0xe0000000\nopen Quoril1 0x20\nclose manager\ncontrol Quoril1 1");
    EXPECT_EQ(bench.record.SetStartType(2, bench.prompts), 0);
    EXPECT_EQ(bench.log(),
        "manager 0xe0000000\nlock\nopen Quoril1 0x2\nchangeConfig Quoril1 startType=2\n"
        "inform SERVICE-MANAGER: Please wait for service reconfiguration... 5000\nunlock\nclose manager");
    EXPECT_EQ(bench.app.RemoveRegistration(u"Quoril1"_s, bench.prompts), 0);
    EXPECT_EQ(bench.log(),
        "manager 0xe0000000\nopen Quoril1 0x10005\nclose manager\nqueryStatus Quoril1\ndelete Quoril1");
}

TEST(ServiceOperations, StateAndStartTypeAreReadAsTheManagerGivesThem)
{
    Bench bench;
    bench.record.StartType = 9;
    const int codes[] = {3, 0, 0, 2, 0, 0, 1, 0};
    for (quint32 state = 1; state <= 8; ++state) {
        bench.script.states = {state};
        EXPECT_EQ(bench.record.QueryState(), 0);
        EXPECT_EQ(bench.record.Status, codes[state - 1]) << state;
    }
    EXPECT_EQ(bench.record.StartType, 3);
    bench.script.config.startType = start_type::Boot;
    bench.script.errors[u"queryConfig"_s] = 122;
    EXPECT_EQ(bench.record.QueryState(), 0);
    EXPECT_EQ(bench.record.StartType, 3);
    EXPECT_EQ(bench.message(), "");
}

TEST(ServiceOperations, AFailedStartMovesTheLogPeriodAndAFailedStopDoesNot)
{
    Bench bench;
    bench.script.errors
        = {{u"start"_s, error::ServiceAlreadyRunning}, {u"control"_s, error::ServiceNotActive}};
    EXPECT_EQ(bench.record.StartNow(), 1);
    bench.machine.fakeClock.setNow(6000);
    EXPECT_EQ(bench.record.StopNow(), 1);
    EXPECT_EQ(bench.record.LogFrom, 5000U);
    EXPECT_EQ(bench.record.LogTo, 5003U);
    bench.script.errors.clear();
    EXPECT_EQ(bench.record.StopNow(), 0);
    EXPECT_EQ(bench.record.LogFrom, 5000U);
    EXPECT_EQ(bench.record.LogTo, 6001U);
}

TEST(ServiceOperations, APrerequisiteIsPolledInFixedSteps)
{
    using namespace service_state;
    const QString begin
        = u"manager 0xe0000000|open Pre 0x14|queryStatus Pre|"
          "inform SERVICE-MANAGER: Wait until pre-requisite service started 2000|start Pre|"_s;
    const QString query = u"queryStatus Pre|"_s;
    const QString second = u"sleep 1000|"_s;
    const struct
    {
        FakeServiceControl::States before, after;
        int result;
        QString log;
    } cases[] = {
        {{Running}, {}, 0, u"manager 0xe0000000|open Pre 0x14|queryStatus Pre|"_s},
        {{Stopped}, {Running}, 0, begin + second + query},
        {{StartPending}, {StartPending, Running}, 0, begin + second + query + query},
        {{Stopped}, {Paused, StartPending, StartPending, Running}, 0,
            begin + second + query + query + second + query + second + query},
        {{Stopped}, {StartPending}, 1,
            begin + second + query + query + second + query + second + query + second + query + second},
    };
    for (const auto& [before, after, result, log] : cases) {
        Bench bench;
        bench.prerequisite(u"Pre"_s, after).states = before;
        EXPECT_EQ(bench.record.StartPrerequisite(u"Pre"_s, bench.prompts), result);
        EXPECT_EQ(
            bench.machine.calls.takeLog().join(u'|').toStdString(), (log + u"close manager"_s).toStdString());
        EXPECT_EQ(
            bench.message(), result == 1 ? "SERVICE-MANAGER: Failed to start pre-requisite service" : "");
        EXPECT_EQ(bench.machine.calls.open(), 0);
    }
}

TEST(ServiceOperations, PrerequisitesAreFoundByTheWalkAndTriedInOrder)
{
    using namespace service_state;
    const auto opened = [](Bench& bench) {
        QStringList names;
        for (const QString& call : bench.machine.calls.takeLog().filter(u"open "_s))
            names.append(call.section(u' ', 1, 1));
        return names.join(u' ').toStdString();
    };
    {
        Bench bench({u"Unknown"_s, u"First"_s, u"Hangs"_s, u"Never"_s});
        bench.prerequisite(u"First"_s, {Running});
        bench.prerequisite(u"Hangs"_s, {StartPending});
        EXPECT_EQ(bench.record.StartPrerequisites(bench.prompts), 1);
        EXPECT_EQ(opened(bench), "Unknown First Hangs");
        for (const QString& asked : bench.machine.fakeRegistry.asked)
            EXPECT_TRUE(asked.endsWith(u"0xf003f")) << asked;
    }
    {
        Bench bench({u"First"_s, u"Unknown"_s});
        bench.prerequisite(u"First"_s, {Running});
        bench.machine.fakeRegistry.wow64 = true;
        EXPECT_EQ(bench.record.StartPrerequisites(bench.prompts), int(error::ServiceDoesNotExist));
        EXPECT_EQ(opened(bench), "First Unknown");
        EXPECT_TRUE(bench.machine.fakeRegistry.asked.last().endsWith(u"0xf013f"));
    }
    const struct
    {
        QString change;
        int result;
    } cases[] = {
        {u"Group=targetPlatformEmulator"_s, 0},
        {u"DependOnService=multi:"_s, 0},
        {u"DependOnService="_s + QString(512, u'x'), -1},
        {QString(), 0},
    };
    for (const auto& [change, result] : cases) {
        Bench bench({u"Pre"_s});
        bench.machine.fakeRegistry.load(u"[%1\\Quoril1]\n%2"_s.arg(Services, change));
        if (change.isEmpty())
            bench.record.Name = u"QUORIL1"_s;
        EXPECT_EQ(bench.record.StartPrerequisites(bench.prompts), result) << change;
        EXPECT_EQ(opened(bench), "");
    }
    Bench bench;
    ASSERT_TRUE(bench.machine.fakeRegistry.key(Services.toString() + u"\\Quoril1"_s)
                    ->removeValue(u"DependOnService"));
    EXPECT_EQ(bench.record.StartPrerequisites(bench.prompts), -1);
}

TEST(ServiceOperations, AHeldDatabaseLockStopsDependenciesButNotTheStartType)
{
    Bench bench;
    bench.machine.fakeServices.database.locked = true;
    EXPECT_EQ(bench.record.SetStartType(4, bench.prompts), 0);
    EXPECT_EQ(bench.script.config.startType, start_type::Disabled);
    bench.log();
    ServiceApp::dependencies().clear();
    EXPECT_EQ(bench.app.SetDependencies(u"Quoril1"_s), -4);
    EXPECT_EQ(bench.log(), "manager 0xe0000000\nlock\nqueryLockStatus\nclose manager");
    // The third call is the caller's own allocation, the one after it the manager's answer.
    for (const auto& [call, result] : {std::pair(3, -3), {4, -4}}) {
        bench.machine.calls.failAt(call, error::NotEnoughMemory);
        EXPECT_EQ(bench.app.SetDependencies(u"Quoril1"_s), result);
    }

    bench.machine.fakeServices.database.locked = false;
    bench.machine.calls.failAt(0);
    EXPECT_TRUE(ServiceApp::dependencies().append(u"rpcss"_s));
    EXPECT_TRUE(ServiceApp::dependencies().append(u"tcpip"_s));
    // 12 + 12 + 2 bytes are taken; a name of 242 units and its zero fill the buffer exactly.
    EXPECT_FALSE(ServiceApp::dependencies().append(QString(243, u'x')));
    EXPECT_EQ(bench.app.SetDependencies(u"Quoril1"_s), 0);
    EXPECT_THAT(
        bench.log(), HasSubstr("changeConfig Quoril1 dependencies=rpcss|tcpip\nunlock\nclose manager"));
    EXPECT_TRUE(ServiceApp::dependencies().append(QString(242, u'x')));
    ServiceApp::dependencies().clear();
}

TEST(ServiceOperations, RemovalAsksTwiceAndTellsEachFailure)
{
    using namespace service_state;
    const QString asked = u"confirm Quoril1|ask Do you really want to remove the selected service?"_s;
    const QString missing = u"message The service is not installed yet."_s;
    const struct
    {
        std::vector<bool> answers;
        QString name, registry;
        quint32 states;
        int result;
        QString told;
    } cases[] = {
        {{false}, u"Quoril1"_s, {}, Stopped, 1, u"confirm Quoril1"_s},
        {{true, false}, u"Quoril1"_s, {}, Stopped, 1, asked},
        {{}, u"Quoril1"_s, {}, Stopped, 0, asked},
        {{}, u"Quoril1"_s, {}, StopPending, -1,
            asked + u"|message Failed to remove a service. The service is still running."_s},
        {{}, u"Quoril1"_s, u"[SYSTEM\\CurrentControlSet\\Services\\Quoril1]\nGroup=Other"_s, Stopped, -1,
            asked + u'|' + missing},
    };
    for (const auto& [answers, name, registry, states, result, told] : cases) {
        Bench bench;
        bench.prompts.answers = answers;
        bench.script.states = {states};
        bench.machine.fakeRegistry.load(registry);
        EXPECT_EQ(bench.app.RemoveService(name, true, bench.prompts), result);
        EXPECT_EQ(bench.script.deleted, result == 0);
        QStringList seen;
        for (const QString& line : bench.machine.calls.takeLog()) {
            if (line.startsWith(u"confirm") || line.startsWith(u"ask") || line.startsWith(u"message"))
                seen.append(line);
        }
        EXPECT_EQ(seen.join(u'|').toStdString(), told.toStdString());
    }
    Bench bench;
    bench.machine.fakeRegistry.refuse(u"SYSTEM\\CurrentControlSet"_s, key_access::Delete);
    EXPECT_EQ(bench.app.RemoveService(u"Quoril1"_s, false, bench.prompts), -1);
    EXPECT_EQ(bench.log(), missing.toStdString());
}

TEST(ServiceOperations, AnInstalledServiceNeedsItsGroupAndItsType)
{
    Bench bench;
    bench.machine.fakeRegistry.load(
        u"[SYSTEM\\CurrentControlSet\\Services\\NoType]\nGroup=TargetPlatformEmulator\n"
        "[SYSTEM\\CurrentControlSet\\Services\\NoType\\Parameters]"_s);
    // What upper-cases to other names stands before them in the registry.
    for (const QString& name : {u"Straße"_s, u"\u017F\u0131\u00B5\u03C2"_s, u"Σίγμα"_s})
        bench.machine.addInstance(name);
    QString installed;
    for (const auto& [name, found] : {std::pair(u"qUORIL1"_s, "QUORIL1"), {u"NoType"_s, ""}, {u"Other"_s, ""},
             {u"STRASSE"_s, ""}, {u"sTRAßE"_s, "STRAßE"}, {u"SI\u039C\u03A3"_s, ""}, {u"σΊΓΜΑ"_s, "ΣΊΓΜΑ"}}) {
        installed = u"x"_s;
        EXPECT_EQ(bench.app.FindInstalledService(name, installed), 0);
        EXPECT_EQ(installed.toStdString(), found);
    }
    bench.machine.fakeRegistry.refuse(u"SYSTEM"_s, key_access::SetValue);
    EXPECT_EQ(bench.app.FindInstalledService(u"Quoril1"_s, installed), -1);
    EXPECT_EQ(bench.machine.calls.open(), 0);
}

TEST(ServiceOperations, ErrorsAndExitCodes)
{
    Bench bench;
    EXPECT_EQ(ServiceApp::ErrorText(5).toStdString(), "Access is denied. (0x5)");
    EXPECT_EQ(ServiceApp::ErrorText(0xBEEF).toStdString(), "0xBEEF");
    bench.machine.fakeProcesses.exitCode = 0xFFFFFFFF;
    EXPECT_EQ(RunProcess(u"x"_s, bench.prompts), -1);
    bench.machine.fakeProcesses.runsFor = 30001;
    EXPECT_EQ(RunProcess(u"x"_s, bench.prompts), 259);
    EXPECT_EQ(bench.log(), "create |x\nwait 30000\ncreate |x\nwait 30000");
    EXPECT_EQ(bench.machine.calls.open(), 0);
}

} // namespace quoril::test
