#include "platform/tree/message_table.h"

#include <QStringView>

#include <algorithm>
#include <iterator>

namespace quoril {

namespace {

struct Message
{
    quint32 number;
    QStringView text;
};

// Sorted by number. Texts with inserts, as 193 and 216 have them, are not here: the system refuses them to
// who inserts nothing.
constexpr Message messages[] = {
    {0, u"The operation completed successfully."},
    {1, u"Incorrect function."},
    {2, u"The system cannot find the file specified."},
    {3, u"The system cannot find the path specified."},
    {4, u"The system cannot open the file."},
    {5, u"Access is denied."},
    {6, u"The handle is invalid."},
    {8, u"Not enough storage is available to process this command."},
    {13, u"The data is invalid."},
    {14, u"Not enough storage is available to complete this operation."},
    {15, u"The system cannot find the drive specified."},
    {16, u"The directory cannot be removed."},
    {17, u"The system cannot move the file to a different disk drive."},
    {18, u"There are no more files."},
    {19, u"The media is write protected."},
    {21, u"The device is not ready."},
    {23, u"Data error (cyclic redundancy check)."},
    {24, u"The program issued a command but the command length is incorrect."},
    {29, u"The system cannot write to the specified device."},
    {30, u"The system cannot read from the specified device."},
    {31, u"A device attached to the system is not functioning."},
    {32, u"The process cannot access the file because it is being used by another process."},
    {33, u"The process cannot access the file because another process has locked a portion of the file."},
    {38, u"Reached the end of the file."},
    {39, u"The disk is full."},
    {50, u"The request is not supported."},
    {53, u"The network path was not found."},
    {55, u"The specified network resource or device is no longer available."},
    {64, u"The specified network name is no longer available."},
    {65, u"Network access is denied."},
    {67, u"The network name cannot be found."},
    {80, u"The file exists."},
    {82, u"The directory or file cannot be created."},
    {87, u"The parameter is incorrect."},
    {110, u"The system cannot open the device or file specified."},
    {111, u"The file name is too long."},
    {112, u"There is not enough space on the disk."},
    {120, u"This function is not supported on this system."},
    {121, u"The semaphore timeout period has expired."},
    {122, u"The data area passed to a system call is too small."},
    {123, u"The filename, directory name, or volume label syntax is incorrect."},
    {126, u"The specified module could not be found."},
    {127, u"The specified procedure could not be found."},
    {145, u"The directory is not empty."},
    {161, u"The specified path is invalid."},
    {170, u"The requested resource is in use."},
    {183, u"Cannot create a file when that file already exists."},
    {206, u"The filename or extension is too long."},
    {223, u"The file size exceeds the limit allowed and cannot be saved."},
    {230, u"The pipe state is invalid."},
    {231, u"All pipe instances are busy."},
    {232, u"The pipe is being closed."},
    {233, u"No process is on the other end of the pipe."},
    {234, u"More data is available."},
    {258, u"The wait operation timed out."},
    {259, u"No more data is available."},
    {267, u"The directory name is invalid."},
    {487, u"Attempt to access invalid address."},
    {534, u"Arithmetic result exceeded 32 bits."},
    {995, u"The I/O operation has been aborted because of either a thread exit or an application request."},
    {996, u"Overlapped I/O event is not in a signaled state."},
    {997, u"Overlapped I/O operation is in progress."},
    {998, u"Invalid access to memory location."},
    {1004, u"Invalid flags."},
    {1008, u"An attempt was made to reference a token that does not exist."},
    {1009, u"The configuration registry database is corrupt."},
    {1010, u"The configuration registry key is invalid."},
    {1011, u"The configuration registry key could not be opened."},
    {1012, u"The configuration registry key could not be read."},
    {1013, u"The configuration registry key could not be written."},
    {1014,
        u"One of the files in the registry database had to be recovered by use of a log or alternate copy. "
        u"The recovery was successful."},
    {1015,
        u"The registry is corrupted. The structure of one of the files containing registry data is "
        u"corrupted, or the system's memory image of the file is corrupted, or the file could not be "
        u"recovered because the alternate copy or log was absent or corrupted."},
    {1016,
        u"An I/O operation initiated by the registry failed unrecoverably. The registry could not read in, "
        u"or write out, or flush, one of the files that contain the system's image of the registry."},
    {1017,
        u"The system has attempted to load or restore a file into the registry, but the specified file is "
        u"not in a registry file format."},
    {1018, u"Illegal operation attempted on a registry key that has been marked for deletion."},
    {1020, u"Cannot create a symbolic link in a registry key that already has subkeys or values."},
    {1021, u"Cannot create a stable subkey under a volatile parent key."},
    {1051, u"A stop control has been sent to a service that other running services are dependent on."},
    {1052, u"The requested control is not valid for this service."},
    {1053, u"The service did not respond to the start or control request in a timely fashion."},
    {1054, u"A thread could not be created for the service."},
    {1055, u"The service database is locked."},
    {1056, u"An instance of the service is already running."},
    {1057,
        u"The account name is invalid or does not exist, or the password is invalid for the account name "
        u"specified."},
    {1058,
        u"The service cannot be started, either because it is disabled or because it has no enabled devices "
        u"associated with it."},
    {1059, u"Circular service dependency was specified."},
    {1060, u"The specified service does not exist as an installed service."},
    {1061, u"The service cannot accept control messages at this time."},
    {1062, u"The service has not been started."},
    {1063, u"The service process could not connect to the service controller."},
    {1064, u"An exception occurred in the service when handling the control request."},
    {1065, u"The database specified does not exist."},
    {1066, u"The service has returned a service-specific error code."},
    {1067, u"The process terminated unexpectedly."},
    {1068, u"The dependency service or group failed to start."},
    {1069, u"The service did not start due to a logon failure."},
    {1070, u"After starting, the service hung in a start-pending state."},
    {1071, u"The specified service database lock is invalid."},
    {1072, u"The specified service has been marked for deletion."},
    {1073, u"The specified service already exists."},
    {1074, u"The system is currently running with the last-known-good configuration."},
    {1075, u"The dependency service does not exist or has been marked for deletion."},
    {1076, u"The current boot has already been accepted for use as the last-known-good control set."},
    {1077, u"No attempts to start the service have been made since the last boot."},
    {1078, u"The name is already in use as either a service name or a service display name."},
    {1079,
        u"The account specified for this service is different from the account specified for other services "
        u"running in the same process."},
    {1080, u"Failure actions can only be set for Win32 services, not for drivers."},
    {1083,
        u"The executable program that this service is configured to run in does not implement the service."},
    {1115, u"A system shutdown is in progress."},
    {1117, u"The request could not be performed because of an I/O device error."},
    {1150, u"The specified program requires a newer version of Windows."},
    {1155, u"No application is associated with the specified file for this operation."},
    {1168, u"Element not found."},
    {1223, u"The operation was canceled by the user."},
    {1225, u"The remote computer refused the network connection."},
    {1300, u"Not all privileges or groups referenced are assigned to the caller."},
    {1314, u"A required privilege is not held by the client."},
    {1326, u"The user name or password is incorrect."},
    {1359, u"An internal error occurred."},
    {1392, u"The file or directory is corrupted and unreadable."},
    {1400, u"Invalid window handle."},
    {1407, u"Cannot find window class."},
    {1450, u"Insufficient system resources exist to complete the requested service."},
    {1455, u"The paging file is too small for this operation to complete."},
    {1460, u"This operation returned because the timeout period expired."},
    {1500, u"The event log file is corrupted."},
    {1501, u"No event log file could be opened, so the event logging service did not start."},
    {1502, u"The event log file is full."},
    {1503, u"The event log file has changed between read operations."},
    {1722, u"The RPC server is unavailable."},
    {1797, u"The printer driver is unknown."},
    {1801, u"The printer name is invalid."},
    {1802, u"The printer already exists."},
};

static_assert(std::is_sorted(std::begin(messages), std::end(messages),
    [](const Message& left, const Message& right) { return left.number < right.number; }));

} // namespace

QString windowsMessage(quint32 number)
{
    const auto* found = std::lower_bound(std::begin(messages), std::end(messages), number,
        [](const Message& message, quint32 wanted) { return message.number < wanted; });
    if (found == std::end(messages) || found->number != number)
        return {};
    return found->text.toString().append(QStringView(u"\r\n"));
}

QString numberedWindowsMessage(quint32 number)
{
    const QString text = windowsMessage(number);
    const QString code = QStringLiteral("0x") + QString::number(number, 16).toUpper();
    return text.isEmpty() ? code : text.trimmed() + QStringLiteral(" (") + code + u')';
}

} // namespace quoril
