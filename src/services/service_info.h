#pragma once

#include "config/device_records.h"
#include "logs/app_event_log.h"
#include "platform/services.h"

#include <QString>

#include <array>
#include <utility>
#include <vector>

namespace quoril {

class UserPrompts;

/// A member that a copy of its owner gets in its new state.
template <typename T> class NotCopied
{
public:
    NotCopied() = default;
    NotCopied(const NotCopied&) : m_value() { }
    NotCopied(NotCopied&& other) noexcept : m_value(std::move(other.m_value)) { }
    NotCopied& operator=(const NotCopied& other)
    {
        if (this != &other)
            m_value = T();
        return *this;
    }
    NotCopied& operator=(NotCopied&& other) noexcept
    {
        m_value = std::move(other.m_value);
        return *this;
    }
    ~NotCopied() = default;

    T& operator*() { return m_value; }
    const T& operator*() const { return m_value; }
    T* operator->() { return &m_value; }
    const T* operator->() const { return &m_value; }

private:
    T m_value;
};

/// One installed emulator instance: a Windows service with what the registry holds of it and what the
/// operations on it found out. Texts come from the registry as they stand; nothing parses them.
class ServiceInfo
{
public:
    static constexpr int FixedTableSize = 8;

    // The values of Status.
    static constexpr qint32 Paused = 1;
    static constexpr qint32 Started = 2;
    static constexpr qint32 Stopped = 3;
    /// What StartPrerequisites() gives where the service itself must not be started.
    static constexpr int PrerequisiteNotRunning = 1;

    QString Name; ///< the service's key name, by which everything finds the record
    QString EmulationType; ///< `TargetPlatformEmulator` below `Parameters`
    QString ImagePath;
    QString DisplayName;
    QString HomeDir; ///< `Home`, ending in a separator; empty if it could not be read
    QString LogFile; ///< machine path of the emulator's log, made absolute with HomeDir
    QString RamSize;
    QString AceEnable;
    QString RomContainer;
    QString ToyContainer;
    QString Message; ///< text of the last failure of an operation on the service
    quint32 Reason = 0; ///< the Windows error number of that failure, 0 where there is none
    qint32 Status = 0; ///< Paused, Started, Stopped, 0 anything else
    qint32 StartType = 0; ///< 2 automatic, 3 manual, 4 disabled, as the service manager gives it
    quint32 ConfigError = 0; ///< why the last QueryState() could not read StartType, 0 if it could
    ServiceStatus Reported; ///< what the service manager reported of it last
    quint32 LogFrom = 0; ///< the period for which the logs are read, in seconds since 1970 UTC
    quint32 LogTo = 0;
    std::array<DeviceList, FixedTableSize> pka;
    std::array<DeviceList, FixedTableSize> pkb;
    DeviceList dua;
    DeviceList dub;
    DeviceList pua;
    DeviceList pub;
    NotCopied<std::vector<QRAPI_Device>> m_devices;
    NotCopied<AppEventLog> AppLog; ///< the event-log entries of the last display

    // The operations below open what they need with the least right, and close it before they come back.
    // Their result is 0, or 1 with the failure's text in Message, unless another is named; a success leaves
    // Message.

    /// Reads Status, Reported and StartType. A configuration that can't be read leaves StartType and is no
    /// failure.
    int QueryState();

    /// Asks for the start and comes back at once. A refused start moves the log period too.
    int StartNow();

    /// Asks for the stop and comes back at once. A refused stop leaves the log period.
    int StopNow();

    /// Starts the services named in this service's `DependOnService`, one level deep, in their order, and
    /// gives the result of the last one tried: PrerequisiteNotRunning if it did not come up, which ends the
    /// walk. -1 if the registry can't be read. With any other result the service itself may be started.
    int StartPrerequisites(UserPrompts& prompts);

    /// Starts the named service unless it runs, and waits up to five seconds behind a box of two: 0 running
    /// or not to be queried, 1 not running in time, 2 not to be queried while it was waited for, -1 no
    /// service manager, else the Windows error number of its opening.
    int StartPrerequisite(const QString& name, UserPrompts& prompts);

    /// Changes the start type (2, 3 or 4) under the lock of the service database, or without it while
    /// somebody else holds it. A success keeps the lock for a box of five seconds.
    int SetStartType(qint32 type, UserPrompts& prompts);
};

/// The record that stands for "no service". Only a display of its empty logs writes to it.
extern ServiceInfo g_no_service;

} // namespace quoril
