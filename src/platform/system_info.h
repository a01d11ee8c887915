#pragma once

#include "formats/error.h"

#include <QString>

namespace quoril {

/// Numbers of processor architectures, with the platform's values. Others occur.
namespace processor_architecture {
inline constexpr quint16 Intel = 0;
inline constexpr quint16 Mips = 1;
inline constexpr quint16 Alpha = 2;
inline constexpr quint16 PowerPc = 3;
inline constexpr quint16 Arm = 5;
inline constexpr quint16 Itanium = 6;
inline constexpr quint16 Amd64 = 9;
inline constexpr quint16 Arm64 = 12;
inline constexpr quint16 Unknown = 0xFFFF;
} // namespace processor_architecture

/// The operating system's version as the system reports it to programs.
struct SystemVersion
{
    static constexpr quint32 PlatformNt = 2;
    static constexpr quint8 Workstation = 1;
    static constexpr quint8 DomainController = 2;
    static constexpr quint8 Server = 3;

    quint32 platformId = PlatformNt;
    quint32 major = 0;
    quint32 minor = 0;
    quint32 build = 0;
    QString servicePack; ///< "Service Pack 1"; empty if there is none
    quint8 productType = Workstation;
    quint16 suiteMask = 0;
    bool isServerR2 = false; ///< release 2 of the server of version 5.2
    quint16 nativeArchitecture = processor_architecture::Unknown;
    quint32 productInfo = 0; ///< the edition's number, 0 if the system doesn't say
};

/// The processors as programs of this process's kind see them.
struct ProcessorInfo
{
    quint32 count = 0;
    quint16 architecture = processor_architecture::Unknown;
    quint16 level = 0;
    quint16 revision = 0;
};

/// What the system reports about itself.
class SystemInfo
{
public:
    virtual ~SystemInfo() = default;

    /// The computer's name, as its registry gives it.
    virtual Result<QString> computerName() const = 0;

    virtual Result<SystemVersion> version() const = 0;

    virtual ProcessorInfo processors() const = 0;

    /// The whole physical memory in bytes.
    virtual Result<quint64> physicalMemory() const = 0;

    /// The system's folder as a machine path ("C:\Windows"), without a separator at its end.
    virtual QString windowsDirectory() const = 0;

    /// The version of one of this program's own files, by its path on the host: the FileVersion string of its
    /// version block, by the block's first translation. An error if it has none. Files::fileVersion() is for
    /// the files of the machine.
    virtual Result<QString> programVersion(const QString& hostPath) const = 0;

    /// The system's text of an error number, its line end (CR LF) included; empty if it has none, or one with
    /// a place for an insert, as 193.
    virtual QString errorText(quint32 number) const = 0;
};

} // namespace quoril
