#pragma once

#include <QString>

#include <vector>

namespace quoril {

struct Ctl;
class Instances;
class ServiceInfo;

// What quorilctl says below the system's own text of a failure: what was given, why, and what to do next.

void adviseUnknown(Ctl& ctl, const QString& name);
/// Names the services that `service` needs and that do not run.
void advisePrerequisites(Ctl& ctl, const ServiceInfo& service);
/// After a refused start: how a disabled service is made one that can be started.
void adviseStart(Ctl& ctl, const ServiceInfo& service);
/// The service did not get to where it was sent, or not in time.
void adviseState(Ctl& ctl, const ServiceInfo& service);
/// After a refused stop: names the instances that run and need the service.
void adviseStop(Ctl& ctl, Instances& instances, const ServiceInfo& service);
/// After a refused removal; `refusal` is the Windows error number of the deletion, 0 if it came to none.
void adviseRemoval(Ctl& ctl, const QString& name, quint32 refusal);
/// After a failed installation, by the machine path of the executable.
void adviseExecutable(Ctl& ctl, const QString& path);

} // namespace quoril
