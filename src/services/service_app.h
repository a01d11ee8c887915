#pragma once

#include "services/service_installation.h"

#include <QString>
#include <QStringList>

namespace quoril {

class UserPrompts;

/// A dependency list under construction: a multi-string of at most 512 bytes, its closing zero included.
class DependencyBuffer
{
public:
    static constexpr qsizetype SizeBytes = 512;

    void clear() { m_names.clear(); }
    /// Adds a name at the end. False, and nothing is added, if the list would outgrow the buffer.
    bool append(const QString& name);
    const QStringList& names() const { return m_names; }

private:
    qsizetype bytesUsed() const;
    QStringList m_names;
};

/// The operations on a service by name. It has no data: an operation shows the person what it has to say,
/// and its result is 0, or -1 if it failed and was reported.
class ServiceApp
{
public:
    ServiceApp() = default;
    virtual ~ServiceApp() = default;
    ServiceApp(const ServiceApp&) = default;
    ServiceApp& operator=(const ServiceApp&) = default;

    /// Has the product's executable register a service, announces it to all programs and rewrites its
    /// dependency list. Reports the success and each failure but missing arguments to the person. It blocks
    /// for up to 30 seconds, and the current directory of machine paths stays the executable's folder.
    virtual InstallOutcome InstallService(const InstallRequest& request, UserPrompts& prompts);

    /// The services of a product, in stored order: those whose emulation type is the product's name with "_"
    /// for its blanks, without regard to case. 0, or -1 if the services can't be walked. Nothing is shown.
    int ListProductServices(const QString& productName, QStringList& serviceNames) const;

    /// Makes dependencies() out of what the executable wrote for the service: in lower case, without
    /// "workspace", "tcpip" last; empty if there is no such service or its list is empty. 0, or -1 if the
    /// list can't be read or is too long for the buffer. Nothing is shown.
    int BuildDependencyList(const QString& serviceName) const;

    /// The list that the next SetDependencies() writes.
    static DependencyBuffer& dependencies();

    /// Replaces the dependencies of the service by dependencies(). Nothing is shown: 0, -1 no service
    /// manager, -2 the database can't be locked, -3 no memory to ask who holds the lock, -4 somebody else
    /// holds it, -5 the service can't be opened, -6 the change was refused.
    int SetDependencies(const QString& serviceName) const;

    /// Deletes a stopped service through the service manager. `refusal` gets the error number of a deletion
    /// that was refused, which is not reported to the person.
    int RemoveRegistration(
        const QString& serviceName, UserPrompts& prompts, quint32* refusal = nullptr) const;

    /// Removes an installed emulator service, after two questions if it is to ask: 0, -1, or 1 if the person
    /// declined. The name goes to the service manager as it is given.
    int RemoveService(
        const QString& serviceName, bool ask, UserPrompts& prompts, quint32* refusal = nullptr) const;

    /// Looks for the service among the emulator services, without regard to case. The installed name comes
    /// out in upper case, empty if there is none. -1 if the services can't be walked. Nothing is shown.
    int FindInstalledService(const QString& serviceName, QString& installedName) const;

    /// The system's text of an error number and the number, "Access is denied. (0x5)", or the number alone.
    static QString ErrorText(quint32 number);
};

/// The message with the reason for it: " Reason: " and ErrorText() of the number, nothing for 0.
QString withReason(const QString& message, quint32 errorNumber);

/// Runs a program and waits for its end, at most 30 seconds: its exit code, 259 if it runs on, 2 (reported)
/// if it could not be created.
int RunProcess(const QString& commandLine, UserPrompts& prompts);

} // namespace quoril
