#include "support/service_bench.h"

namespace quoril::test {

using namespace service_state;

namespace {

struct Outcome
{
    int result;
    QStringView seen; ///< in the record's message or the log
};

/// Makes each platform call of an operation fail in turn: each has the outcome that is listed. After the last
/// of them the operation succeeds.
void failEachCall(std::vector<Outcome> outcomes, const std::function<int(ServiceBench&)>& operation)
{
    outcomes.push_back({0, {}});
    for (std::size_t n = 1; n <= outcomes.size(); ++n) {
        SCOPED_TRACE(n);
        ServiceBench bench({u"Pre"_s});
        bench.fakeServices.service(u"Pre"_s).afterStart = {StartPending, Running};
        bench.calls.failAt(int(n));
        EXPECT_EQ(operation(bench), outcomes[n - 1].result);
        ASSERT_EQ(bench.calls.count() < int(n), n == outcomes.size());
        const QString seen = bench.record.Message + bench.log();
        EXPECT_TRUE(seen.contains(outcomes[n - 1].seen)) << seen;
    }
}

} // namespace

TEST(ServiceOperations, EveryFailingCallGivesItsTextAndLeavesNothingOpen)
{
    const Outcome manager{1, u"SERVICE-MANAGER: Failed to connect to Service Control Manager"};
    const Outcome service{1, u"SERVICE-MANAGER: Failed to connect to service Quoril1"};
    failEachCall({manager, service, {1, u"SERVICE-MANAGER: Failed to query status of service Quoril1"},
                     {0, u"queryConfig Quoril1"}},
        [](ServiceBench& b) { return b.record.QueryState(); });
    failEachCall({manager, service, {1, u"Failed to start the service \"Quoril1\""}},
        [](ServiceBench& b) { return b.record.StartNow(); });
    failEachCall({manager, service, {1, u"Failed to stop the service \"Quoril1\""}},
        [](ServiceBench& b) { return b.record.StopNow(); });
    failEachCall({manager, {1, u"SERVICE-MANAGER: Failed to lock a Service Database"}, service,
                     {1, u"SERVICE-MANAGER: Failed to reconfigurate service Quoril1"}},
        [](ServiceBench& b) { return b.record.SetStartType(4, b.prompts); });
    // The walk: machine, SYSTEM, CurrentControlSet, Services, name, key, Group, DependOnService, then the
    // prerequisite.
    failEachCall({{-1, {}}, {-1, {}}, {-1, {}}, {-1, {}}, {0, {}}, {0, {}}, {0, {}}, {-1, {}},
                     {-1, u"manager"}, {5, u"open Pre"}, {0, u"queryStatus Pre"},
                     {1, u"Failed to start pre-requisite service"}, {0, {}}, {2, u"sleep 1000"}},
        [](ServiceBench& b) { return b.record.StartPrerequisites(b.prompts); });
    failEachCall({{-1, {}}, {-2, {}}, {-5, {}}, {-6, {}}},
        [](ServiceBench& b) { return b.app.SetDependencies(u"Quoril1"_s); });
    // The walk to the instance and its type comes first; no failure of it has a text of its own.
    std::vector<Outcome> removal(9, {-1, u"message The service is not installed yet."});
    for (const QStringView message :
        {u"message Failed to connect to Service Control Manager. Reason: Access is denied. (0x5)",
            u"message Failed to connect to service. Reason: Access is denied. (0x5)",
            u"message Failed to query status of service. Reason: Access is denied. (0x5)",
            u"message Failed to remove a service."})
        removal.push_back({-1, message});
    failEachCall(
        removal, [](ServiceBench& b) { return b.app.RemoveService(u"quoril1"_s, false, b.prompts); });
    failEachCall({{2, u"message CreateProcess failed. Command line: \"x --y\""}, {0, u"wait 30000"}},
        [](ServiceBench& b) {
            b.fakeProcesses.exitCode = 0;
            return RunProcess(u"x --y"_s, b.prompts);
        });
}

TEST(ServiceOperations, AskForTheLeastRightAndCloseInOrder)
{
    ServiceBench bench;
    EXPECT_EQ(bench.record.QueryState(), 0);
    EXPECT_EQ(bench.log(),
        u"manager 0xe0000000\nopen Quoril1 0x5\nclose manager\nqueryStatus Quoril1\nqueryConfig Quoril1");
    EXPECT_EQ(bench.record.StartNow(), 0);
    EXPECT_EQ(bench.log(), u"manager 0xe0000000\nopen Quoril1 0x10\nclose manager\nstart Quoril1");
    EXPECT_EQ(bench.record.StopNow(), 0);
    EXPECT_EQ(bench.log(), u"manager 0xe0000000\nopen Quoril1 0x20\nclose manager\ncontrol Quoril1 1");
    EXPECT_EQ(bench.record.SetStartType(2, bench.prompts), 0);
    EXPECT_EQ(bench.log(),
        u"manager 0xe0000000\nlock\nopen Quoril1 0x2\nchangeConfig Quoril1 startType=2\n"
        "inform SERVICE-MANAGER: Please wait for service reconfiguration... 5000\nunlock\nclose manager");
    EXPECT_EQ(bench.app.RemoveRegistration(u"Quoril1"_s, bench.prompts), 0);
    EXPECT_EQ(bench.log(),
        u"manager 0xe0000000\nopen Quoril1 0x10005\nclose manager\nqueryStatus Quoril1\ndelete Quoril1");
}

TEST(ServiceOperations, StateAndStartTypeAreReadAsTheManagerGivesThem)
{
    ServiceBench bench;
    bench.record.StartType = 9;
    const int codes[] = {3, 0, 0, 2, 0, 0, 1, 0};
    for (quint32 state = 1; state <= 8; ++state) {
        bench.script.states = {state};
        EXPECT_EQ(bench.record.QueryState(), 0);
        EXPECT_EQ(bench.record.Status, codes[state - 1]) << state;
    }
    EXPECT_EQ(bench.record.StartType, 3);
    bench.script.config.startType = start_type::Boot;
    bench.script.errors[u"queryConfig"_s] = error::InsufficientBuffer;
    EXPECT_EQ(bench.record.QueryState(), 0);
    EXPECT_EQ(bench.record.StartType, 3);
    EXPECT_EQ(bench.record.Message, QString());
}

TEST(ServiceOperations, AFailedStartMovesTheLogPeriodAndAFailedStopDoesNot)
{
    ServiceBench bench;
    bench.script.errors
        = {{u"start"_s, error::ServiceAlreadyRunning}, {u"control"_s, error::ServiceNotActive}};
    bench.fakeClock.setNow(5000);
    EXPECT_EQ(bench.record.StartNow(), 1);
    bench.fakeClock.setNow(6000);
    EXPECT_EQ(bench.record.StopNow(), 1);
    EXPECT_EQ(std::pair(bench.record.LogFrom, bench.record.LogTo), std::pair(5000U, 5003U));
    bench.script.errors.clear();
    EXPECT_EQ(bench.record.StopNow(), 0);
    EXPECT_EQ(std::pair(bench.record.LogFrom, bench.record.LogTo), std::pair(5000U, 6001U));
}

TEST(ServiceOperations, APrerequisiteIsPolledInFixedSteps)
{
    const QString open = u"manager 0xe0000000\nopen Pre 0x14\nqueryStatus Pre\n"_s;
    const QString begin
        = open + u"inform SERVICE-MANAGER: Wait until pre-requisite service started 2000\nstart Pre\n"_s;
    const QString query = u"queryStatus Pre\n"_s;
    const QString second = u"sleep 1000\n"_s;
    const struct
    {
        ServiceScript::States before, after;
        int result;
        QString log;
    } cases[] = {
        {{Running}, {}, 0, open},
        {{Stopped}, {Running}, 0, begin + second + query},
        {{StartPending}, {StartPending, Running}, 0, begin + second + query + query},
        {{Stopped}, {Paused, StartPending, StartPending, Running}, 0,
            begin + second + query + (query + second).repeated(2) + query},
        {{Stopped}, {StartPending}, 1, begin + second + query + (query + second).repeated(4)},
    };
    for (const auto& [before, after, result, log] : cases) {
        ServiceBench bench;
        auto& pre = bench.fakeServices.service(u"Pre"_s);
        pre.states = before;
        pre.afterStart = after;
        EXPECT_EQ(bench.record.StartPrerequisite(u"Pre"_s, bench.prompts), result);
        EXPECT_EQ(bench.log(), log + u"close manager"_s);
        EXPECT_EQ(bench.record.Message,
            result == 1 ? u"SERVICE-MANAGER: Failed to start pre-requisite service"_s : QString());
    }
}

TEST(ServiceOperations, PrerequisitesAreFoundByTheWalkAndTriedInOrder)
{
    const struct
    {
        QString values; ///< of the instance's key
        int result;
        QString opened;
        QString name = u"Quoril1"_s;
    } cases[] = {
        {u"DependOnService=multi:Unknown|First|Hangs|Never"_s, 1,
            u"open Unknown 0x14\nopen First 0x14\nopen Hangs 0x14"_s},
        {u"DependOnService=multi:First|Unknown"_s, error::ServiceDoesNotExist,
            u"open First 0x14\nopen Unknown 0x14"_s},
        {u"DependOnService=multi:"_s, 0, {}},
        {u"DependOnService="_s + QString(511, u'x'), -1, {}},
        {u"Group=targetPlatformEmulator"_s, 0, {}},
        {{}, 0, {}, u"QUORIL1"_s},
    };
    for (const auto& [values, result, opened, name] : cases) {
        ServiceBench bench({u"First"_s});
        bench.fakeServices.service(u"First"_s);
        bench.fakeServices.service(u"Hangs"_s).afterStart = {StartPending};
        bench.fakeRegistry.load(u"[SYSTEM\\CurrentControlSet\\Services\\Quoril1]\n"_s + values);
        bench.record.Name = name;
        EXPECT_EQ(bench.record.StartPrerequisites(bench.prompts), result) << values;
        EXPECT_EQ(bench.log(u"^open "_s), opened);
    }
}

TEST(ServiceOperations, AHeldDatabaseLockStopsDependenciesButNotTheStartType)
{
    ServiceBench bench;
    bench.fakeServices.database.locked = true;
    EXPECT_EQ(bench.record.SetStartType(4, bench.prompts), 0);
    EXPECT_EQ(bench.script.config.startType, start_type::Disabled);
    bench.log();
    ServiceApp::dependencies().clear();
    EXPECT_EQ(bench.app.SetDependencies(u"Quoril1"_s), -4);
    EXPECT_EQ(bench.log(), u"manager 0xe0000000\nlock\nqueryLockStatus\nclose manager");
    // The third call is the caller's own allocation, the one after it the manager's answer.
    for (const auto& [call, result] : {std::pair(3, -3), {4, -4}}) {
        bench.calls.failAt(call, error::NotEnoughMemory);
        EXPECT_EQ(bench.app.SetDependencies(u"Quoril1"_s), result);
    }

    bench.fakeServices.database.locked = false;
    bench.calls.failAt(0);
    EXPECT_TRUE(ServiceApp::dependencies().append(u"rpcss"_s));
    EXPECT_TRUE(ServiceApp::dependencies().append(u"tcpip"_s));
    // 12 + 12 + 2 bytes are taken; a name of 242 units and its zero fill the buffer exactly.
    EXPECT_FALSE(ServiceApp::dependencies().append(QString(243, u'x')));
    bench.log();
    EXPECT_EQ(bench.app.SetDependencies(u"Quoril1"_s), 0);
    EXPECT_EQ(bench.log(u"Config|lock|close"_s),
        u"lock\nchangeConfig Quoril1 dependencies=rpcss|tcpip\nunlock\nclose manager");
    EXPECT_TRUE(ServiceApp::dependencies().append(QString(242, u'x')));
    ServiceApp::dependencies().clear();
}

TEST(ServiceOperations, RemovalAsksTwiceAndReportsEachFailure)
{
    const QString asked = u"confirm Quoril1\nask Do you really want to remove the selected service?"_s;
    const QString missing = u"message The service is not installed yet."_s;
    const struct
    {
        std::vector<bool> answers;
        QString values; ///< of the instance's key
        quint32 state;
        int result;
        QString shown;
    } cases[] = {
        {{false}, {}, Stopped, 1, u"confirm Quoril1"_s},
        {{true, false}, {}, Stopped, 1, asked},
        {{}, {}, Stopped, 0, asked},
        {{}, {}, StopPending, -1,
            asked + u"\nmessage Failed to remove a service. The service is still running."_s},
        {{}, u"Group=Other"_s, Stopped, -1, asked + u'\n' + missing},
    };
    for (const auto& [answers, values, state, result, shown] : cases) {
        ServiceBench bench;
        bench.prompts.answers = answers;
        bench.script.states = {state};
        bench.fakeRegistry.load(u"[SYSTEM\\CurrentControlSet\\Services\\Quoril1]\n"_s + values);
        EXPECT_EQ(bench.app.RemoveService(u"Quoril1"_s, true, bench.prompts), result);
        EXPECT_EQ(bench.script.deleted, result == 0);
        EXPECT_EQ(bench.log(u"^(confirm|ask|message) "_s), shown);
    }
}

TEST(ServiceOperations, AnInstalledServiceNeedsItsGroupAndItsType)
{
    ServiceBench bench;
    bench.fakeRegistry.load(u"[SYSTEM\\CurrentControlSet\\Services\\NoType]\nGroup=TargetPlatformEmulator\n"
                            "[SYSTEM\\CurrentControlSet\\Services\\NoType\\Parameters]"_s);
    // What upper-cases to other names stands before them in the registry.
    for (const QString& name : {u"Straße"_s, u"\u017F\u0131\u00B5\u03C2"_s, u"Σίγμα"_s})
        bench.addInstance(name);
    QString installed;
    for (const auto& [name, found] :
        {std::pair(u"qUORIL1"_s, u"QUORIL1"_s), {u"NoType"_s, {}}, {u"Other"_s, {}}, {u"STRASSE"_s, {}},
            {u"sTRAßE"_s, u"STRAßE"_s}, {u"SI\u039C\u03A3"_s, {}}, {u"σΊΓΜΑ"_s, u"ΣΊΓΜΑ"_s}}) {
        EXPECT_EQ(bench.app.FindInstalledService(name, installed), 0);
        EXPECT_EQ(installed, found);
    }
    bench.fakeRegistry.refuse(u"SYSTEM"_s, key_access::SetValue);
    EXPECT_EQ(bench.app.FindInstalledService(u"Quoril1"_s, installed), -1);
}

} // namespace quoril::test
