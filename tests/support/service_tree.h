#pragma once

#include "platform/services.h"
#include "platform/tree/tree_service_state.h"
#include "support/temporary_tree.h"

#include <csignal>

#include <chrono>
#include <thread>

namespace quoril::test {

using namespace std::chrono_literals;

inline constexpr quint32 AllServiceRights = 0xF01FF;

/// A tree with the emulator in it and services that run it. Those that still run at the end are killed.
class ServiceTree : public TemporaryTree
{
public:
    ServiceTree()
    {
        makeFolder(u"Program Files/Quoril"_s);
        makeFolder(u"Emulators"_s);
        EXPECT_TRUE(QFile::copy(QStringLiteral(QUORIL_EMULATOR), host(EmulatorBelow)));
        import(machine.registry(),
            "[HKEY_LOCAL_MACHINE\\SYSTEM\\Select]\r\n\"Current\"=dword:00000001\r\n"
            "[HKEY_LOCAL_MACHINE\\SYSTEM\\ControlSet001\\Services]\r\n");
    }
    ~ServiceTree()
    {
        for (const QString& each : names) {
            const ServiceRecord record = folder(each).current();
            for (const auto& process : {record.host, record.service})
                if (process)
                    process->signal(SIGKILL);
        }
    }

    enum class Path
    {
        EmulatorOptions,
        Whole
    };

    /// Registers a service that runs the emulator with these options, or a path of its own.
    void add(const QString& name, const QString& text = {}, Path path = Path::EmulatorOptions)
    {
        const NewService service{name, name + u" instance"_s,
            path == Path::Whole ? text : EmulatorPath + u' ' + text, u"TargetPlatformEmulator"_s,
            start_type::Manual, {}};
        EXPECT_EQ(manager()->createService(service).errorNumber(), 0u);
        const auto key = keyAt(machine.registry(), u"SYSTEM\\CurrentControlSet\\Services\\"_s + name);
        const auto parameters = (*key)->create(u"Parameters", key_access::AllAccess);
        EXPECT_TRUE((*parameters)->setText(u"Home", u"C:\\Emulators"));
        names.append(name);
    }

    std::unique_ptr<ServiceManager> manager()
    {
        return *machine.services().openManager(service_access::ManagerGenericAll);
    }
    Result<std::unique_ptr<Service>> open(const QString& name, quint32 access = AllServiceRights)
    {
        return manager()->openService(name, access);
    }
    ServiceFolder folder(const QString& name) { return ServiceFolder(machine.paths(), name); }

    /// The status once the service has come to the state, or after so long.
    ServiceStatus await(Service& service, quint32 state, std::chrono::milliseconds longest = 15s)
    {
        const auto end = std::chrono::steady_clock::now() + longest;
        while (true) {
            const Result<ServiceStatus> status = service.queryStatus();
            const bool isThere = status && status->currentState == state;
            if (isThere || std::chrono::steady_clock::now() > end)
                return status ? *status : ServiceStatus{0, status.errorNumber(), 0, 0};
            std::this_thread::sleep_for(2ms);
        }
    }
    bool comesTo(Service& service, quint32 state) { return await(service, state).currentState == state; }

    static inline const QString EmulatorBelow = u"Program Files/Quoril/quoril-emulator.exe"_s;
    static inline const QString EmulatorPath = u"\"C:\\Program Files\\Quoril\\quoril-emulator.exe\""_s;

    TreeMachine machine{root()};
    QStringList names;
};

} // namespace quoril::test
