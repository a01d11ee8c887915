#pragma once

#include "fake_calls.h"
#include "formats/name_case.h"
#include "platform/services.h"

#include <map>
#include <vector>

namespace quoril::test {

/// A service manager that follows a script. Each call is logged in the form "start A"; an open service and
/// the manager with the rights asked for, "open A 0x14".
class FakeServiceControl : public ServiceControl
{
public:
    using States = std::vector<quint32>;

    struct Script
    {
        States states{service_state::Stopped}; ///< one for each query, the last one stays
        States afterStart{service_state::Running}; ///< the states from an accepted start on
        States afterStop{service_state::Stopped};
        ServiceConfig config{0x10, start_type::Manual, 1, {}, {}, {}, {}};
        /// The error of an operation by its word in the log: open, queryStatus, queryConfig, start, control,
        /// changeConfig, delete.
        std::map<QString, quint32> errors;
        bool deleted = false;
        quint32 processId = 0; ///< what runs after a stop has the next one
    };

    explicit FakeServiceControl(FakeCalls& calls) : m_calls(calls) { }

    /// The service of that name, made when there is none. Names match without regard to case.
    Script& service(const QString& name) { return m_services[upcase(name)]; }

    bool locked = false; ///< the database is locked, by whomever
    quint32 lockError = error::Success;

    Result<std::unique_ptr<ServiceManager>> openManager(quint32 access) override;

private:
    friend class FakeManager;
    FakeCalls& m_calls;
    std::map<QString, Script> m_services;
};

} // namespace quoril::test
