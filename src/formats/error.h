#pragma once

#include <QString>

#include <optional>
#include <utility>
#include <variant>

namespace quoril {

/// Windows error numbers, as the platform's operations give them on both backends.
namespace error {
inline constexpr quint32 Success = 0;
inline constexpr quint32 FileNotFound = 2;
inline constexpr quint32 PathNotFound = 3;
inline constexpr quint32 AccessDenied = 5;
inline constexpr quint32 InvalidHandle = 6;
inline constexpr quint32 NotEnoughMemory = 8;
inline constexpr quint32 WriteProtect = 19;
inline constexpr quint32 WriteFault = 29;
inline constexpr quint32 SharingViolation = 32;
inline constexpr quint32 LockViolation = 33;
inline constexpr quint32 HandleEof = 38;
inline constexpr quint32 NotSupported = 50;
inline constexpr quint32 FileExists = 80;
inline constexpr quint32 InvalidParameter = 87;
inline constexpr quint32 DiskFull = 112;
inline constexpr quint32 CallNotImplemented = 120;
inline constexpr quint32 InsufficientBuffer = 122;
inline constexpr quint32 InvalidName = 123;
inline constexpr quint32 BadExeFormat = 193;
inline constexpr quint32 FileTooLarge = 223;
inline constexpr quint32 MoreData = 234;
inline constexpr quint32 NoMoreItems = 259;
inline constexpr quint32 BadDatabase = 1009;
inline constexpr quint32 CantOpen = 1011;
inline constexpr quint32 RegistryCorrupt = 1015;
inline constexpr quint32 KeyDeleted = 1018;
inline constexpr quint32 DependentServicesRunning = 1051;
inline constexpr quint32 InvalidServiceControl = 1052;
inline constexpr quint32 ServiceRequestTimeout = 1053;
inline constexpr quint32 ServiceDatabaseLocked = 1055;
inline constexpr quint32 ServiceAlreadyRunning = 1056;
inline constexpr quint32 ServiceDisabled = 1058;
inline constexpr quint32 CircularDependency = 1059;
inline constexpr quint32 ServiceDoesNotExist = 1060;
inline constexpr quint32 ServiceCannotAcceptControl = 1061;
inline constexpr quint32 ServiceNotActive = 1062;
inline constexpr quint32 ProcessAborted = 1067;
inline constexpr quint32 ServiceDependencyFail = 1068;
inline constexpr quint32 ServiceMarkedForDelete = 1072;
inline constexpr quint32 ServiceExists = 1073;
inline constexpr quint32 ServiceDependencyDeleted = 1075;
inline constexpr quint32 ServiceNeverStarted = 1077;
inline constexpr quint32 ResourceDataNotFound = 1812;
inline constexpr quint32 ResourceTypeNotFound = 1813;
inline constexpr quint32 ResourceNameNotFound = 1814;
inline constexpr quint32 EventLogFileCorrupt = 1500;
} // namespace error

/// A failure: its Windows error number and, where there is more to say than the number's own text, a
/// detail in English for standard error (never shown in a dialog).
struct Error
{
    quint32 number = error::InvalidParameter;
    QString detail;
};

/// The value of an operation, or the error that kept it from being made.
template <typename T> class [[nodiscard]] Result
{
public:
    Result(T value) : m_state(std::in_place_index<0>, std::move(value)) { }
    Result(Error failure) : m_state(std::in_place_index<1>, std::move(failure)) { }

    bool ok() const { return m_state.index() == 0; }
    explicit operator bool() const { return ok(); }

    /// The value; only when ok().
    T& operator*() & { return std::get<0>(m_state); }
    const T& operator*() const& { return std::get<0>(m_state); }
    T&& operator*() && { return std::get<0>(std::move(m_state)); }
    T* operator->() { return &std::get<0>(m_state); }
    const T* operator->() const { return &std::get<0>(m_state); }

    /// The error; only when not ok().
    const Error& failure() const { return std::get<1>(m_state); }
    /// The error number, 0 when ok().
    quint32 errorNumber() const { return ok() ? error::Success : failure().number; }

private:
    std::variant<T, Error> m_state;
};

/// The outcome of an operation that gives nothing back.
template <> class [[nodiscard]] Result<void>
{
public:
    Result() = default;
    Result(Error failure) : m_failure(std::move(failure)) { }

    bool ok() const { return !m_failure; }
    explicit operator bool() const { return ok(); }
    const Error& failure() const { return *m_failure; }
    quint32 errorNumber() const { return ok() ? error::Success : m_failure->number; }

private:
    std::optional<Error> m_failure;
};

using Status = Result<void>;

} // namespace quoril
