#include "platform/contract/contract_machine.h"

namespace quoril::test {

namespace {

using namespace service_state;

constexpr quint32 AllRights = 0xF01FF;

class ServiceContract : public ContractTest
{
protected:
    ~ServiceContract() override
    {
        if (const auto service = open(Name)) {
            if ((*service)->control(ServiceControlStop))
                comesTo(**service, Stopped);
            (void)(*service)->markForDelete().ok();
        }
    }

    std::unique_ptr<ServiceManager> manager()
    {
        return *machine.services().openManager(service_access::ManagerGenericAll);
    }
    Result<std::unique_ptr<Service>> open(QStringView name, quint32 rights = AllRights)
    {
        return manager()->openService(name, rights);
    }
    NewService service(const QString& options = {}) const
    {
        return {Name, u"Contract: display name"_s, contract->emulator() + options,
            u"TargetPlatformEmulator"_s, start_type::Manual, {}};
    }
    bool comesTo(Service& service, quint32 state)
    {
        for (int i = 0; i < 400; ++i, machine.clock().sleep(25))
            if (const auto status = service.queryStatus(); status && status->currentState == state)
                return true;
        return false;
    }

    static inline const QString Name = u"QuorilContract"_s;
};

TEST_F(ServiceContract, RegistersAndChangesWhatIsAskedFor)
{
    EXPECT_EQ(open(Name).errorNumber(), error::ServiceDoesNotExist);
    EXPECT_EQ(open(u"a/b").errorNumber(), error::InvalidName);
    NewService made = service(u" --stop-delay 1"_s);
    made.dependencies = QStringList({u"Tcpip"_s, u"+NDIS"_s});
    ASSERT_EQ(manager()->createService(made).errorNumber(), 0u);
    made.name = u"QUORILcontract"_s;
    EXPECT_EQ(manager()->createService(made).errorNumber(), error::ServiceExists);
    const auto opened = *open(u"quorilcontract");
    auto config = opened->queryConfig(8192);
    ASSERT_TRUE(config);
    EXPECT_EQ(config->serviceType, 0x10u);
    EXPECT_EQ(config->startType, start_type::Manual);
    EXPECT_EQ(config->errorControl, 1u);
    EXPECT_EQ(config->binaryPath, made.binaryPath);
    EXPECT_EQ(config->displayName, made.displayName);
    EXPECT_EQ(config->loadOrderGroup, u"TargetPlatformEmulator");
    // Wine gives no dependencies, and loses them when the start type changes.
    const QStringList dependencies = contract->isWine() ? QStringList() : made.dependencies;
    EXPECT_EQ(config->dependencies, dependencies);
    EXPECT_EQ(opened->queryConfig(100).errorNumber(), error::InsufficientBuffer);

    ServiceConfigChange change;
    change.startType = start_type::Disabled;
    ASSERT_TRUE(opened->changeConfig(change));
    config = opened->queryConfig(8192);
    EXPECT_EQ(config->startType, start_type::Disabled);
    EXPECT_EQ(config->binaryPath, made.binaryPath);
    EXPECT_EQ(config->displayName, made.displayName);
    EXPECT_EQ(config->dependencies, dependencies);
    EXPECT_EQ(opened->start().errorNumber(), error::ServiceDisabled);
    change = {};
    change.displayName = u"Other"_s;
    change.binaryPath = u"C:\\nothing\\here.exe"_s;
    change.startType = start_type::Manual;
    ASSERT_TRUE(opened->changeConfig(change));
    EXPECT_EQ(opened->queryConfig(8192)->displayName, u"Other");
    EXPECT_EQ(opened->queryConfig(8192)->binaryPath, u"C:\\nothing\\here.exe");
}

TEST_F(ServiceContract, AsksForTheRightOfEachOperation)
{
    ASSERT_EQ(manager()->createService(service()).errorNumber(), 0u);
    const auto none = *open(Name, 0x20000);
    const quint32 denied[] = {none->queryStatus().errorNumber(), none->queryConfig(8192).errorNumber(),
        none->start().errorNumber(), none->control(ServiceControlStop).errorNumber(),
        none->changeConfig({}).errorNumber(), none->markForDelete().errorNumber()};
    for (const quint32 number : denied)
        EXPECT_EQ(number, error::AccessDenied);
    const auto connected = *machine.services().openManager(service_access::ManagerConnect);
    EXPECT_EQ(connected->createService(service()).errorNumber(), error::AccessDenied);
    EXPECT_TRUE((*open(Name, service_access::QueryStatus))->queryStatus());
}

TEST_F(ServiceContract, StartsAndStopsARealProcess)
{
    ASSERT_EQ(manager()->createService(service(u" --start-delay 600 --stop-delay 600"_s)).errorNumber(), 0u);
    const auto opened = *open(Name);
    EXPECT_EQ(opened->queryStatus()->currentState, Stopped);
    EXPECT_EQ(opened->queryStatus()->win32ExitCode, error::ServiceNeverStarted);
    EXPECT_EQ(opened->control(ServiceControlStop).errorNumber(), error::ServiceNotActive);
    ASSERT_EQ(opened->start().errorNumber(), 0u);
    EXPECT_EQ(opened->queryStatus()->currentState, StartPending);
    EXPECT_EQ(opened->start().errorNumber(), error::ServiceAlreadyRunning);
    ASSERT_TRUE(comesTo(*opened, Running));
    ASSERT_TRUE(opened->control(ServiceControlStop));
    ASSERT_TRUE(comesTo(*opened, StopPending));
    EXPECT_TRUE(comesTo(*opened, Stopped));
    EXPECT_EQ(opened->queryStatus()->win32ExitCode, 0u);
    EXPECT_EQ(opened->control(ServiceControlStop).errorNumber(), error::ServiceNotActive);
}

TEST_F(ServiceContract, RemovesAMarkedServiceWhenNobodyHasItOpen)
{
    ASSERT_EQ(manager()->createService(service()).errorNumber(), 0u);
    {
        const auto opened = *open(Name);
        ASSERT_TRUE(opened->markForDelete());
        EXPECT_EQ(opened->markForDelete().errorNumber(), error::ServiceMarkedForDelete);
    }
    for (int i = 0; i < 200 && open(Name); ++i)
        machine.clock().sleep(25);
    EXPECT_EQ(open(Name).errorNumber(), error::ServiceDoesNotExist);
}

TEST_F(ServiceContract, LocksItsDatabase)
{
    if (contract->isWine())
        GTEST_SKIP()
            << "Wine's service manager has no lock: every caller gets it, and its state can't be asked";
    const auto status = manager()->queryLockStatus(QueryBlock(268));
    EXPECT_TRUE(status && !status->isLocked) << status.errorNumber();
    const auto unable = machine.services().openManager(service_access::ManagerConnect);
    ASSERT_TRUE(unable);
    EXPECT_EQ((*unable)->lockDatabase().errorNumber(), error::AccessDenied);
    EXPECT_TRUE(manager()->lockDatabase());
    EXPECT_TRUE(manager()->lockDatabase()) << "the first lock ended with its object";
}

} // namespace

} // namespace quoril::test
