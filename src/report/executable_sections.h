#pragma once

#include <QStringView>

namespace quoril {

class ReportStream;
struct VersionRecord;

/// Writes the listings of the folders of both executables, and the versions of the network drivers.
void writeExecutableSections(ReportStream& out, QStringView guiExecutablePath, QStringView executablePath);

/// Lists the executables, then the libraries, of the folder that the path of one file names, each with its
/// version. The path may stand in quotes. A file without a version shows that of the file before it.
void DescribeExecutables(ReportStream& out, QStringView path);

/// The same of the folder of the console's own program. Where that program lies outside the machine, its path
/// is that of the host, and so is its folder.
void describeOwnExecutables(ReportStream& out, QStringView path);

/// Reads the version of the file into the record; a file without one leaves the record as it is.
void ReadFileVersion(QStringView file, VersionRecord& version);

/// Reads the version numbers of the driver service's file into the record; a file without a version leaves
/// it as it is. False if there is no such service or it has no `ImagePath`.
bool ReadDriverVersion(QStringView name, VersionRecord& version);

} // namespace quoril
