#pragma once

#include "services/service_app.h"
#include "services/service_info.h"
#include "support/fake_machine.h"

namespace quoril::test {

/// A machine with the instance "Quoril1", stopped, and a record of it. Installers on it succeed, and a second
/// of a window's timer is ten milliseconds.
struct ServiceBench : FakeMachine
{
    explicit ServiceBench(const QStringList& prerequisites = {})
        : script(addInstance(u"Quoril1"_s, prerequisites))
    {
        record.Name = u"Quoril1"_s;
        fakeProcesses.exitCode = 0xFFFFFFFF;
        fakeClock.timerScale = 0.01;
    }
    /// What was called since the last look, or what the pattern is found in of it.
    QString log(const QString& pattern = {}) { return calls.takeLog(pattern).join(u'\n'); }

    ServiceScript& script;
    ServiceInfo record;
    ServiceApp app;
    RecordingPrompts prompts{*this};
};

} // namespace quoril::test
