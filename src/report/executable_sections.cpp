#include "report/executable_sections.h"

#include "platform/files.h"
#include "platform/machine.h"
#include "platform/machine_path.h"
#include "platform/registry.h"
#include "platform/system_info.h"
#include "report/report_stream.h"
#include "shell/version_record.h"

#include <QCoreApplication>
#include <QDir>
#include <QStringBuilder>

#include <algorithm>
#include <functional>
#include <limits>
#include <optional>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

/// 2047 bytes of a version's text are looked at.
constexpr qsizetype VersionUnits = 2047 / 2;

std::optional<QString> fileVersionOf(QStringView file)
{
    const auto text = machine().files().fileVersion(file);
    return text ? std::optional(text->left(VersionUnits)) : std::nullopt;
}

QString numbersOf(const VersionRecord& version)
{
    return u"[major.minor.sub_minor.build] [%1.%2.%3.%4] "_s.arg(version.major)
        .arg(version.minor)
        .arg(version.sub_minor)
        .arg(version.build);
}

/// Lists the executables, then the libraries, that are found in the folder. A file without a version shows
/// that of the file before it.
void writeListing(ReportStream& out, const QString& folder,
    const std::function<QStringList(const QString& pattern)>& find,
    const std::function<std::optional<QString>(const QString& file)>& versionOf)
{
    VersionRecord version;
    for (const QString& pattern : {u"*.exe"_s, u"*.dll"_s}) {
        for (const QString& name : find(pattern)) {
            const QString file = folder + name;
            if (const auto text = versionOf(file))
                version = VersionRecord::parse(*text);
            out.write(QString(u"Executable: " % file % u" \"" % version.version_text % u"\"\r\n"));
            out.write(QString(numbersOf(version) % u"\r\n\r\n"));
        }
    }
    out.write(u"-------------------- End of Executable Description --------------------\r\n\r\n");
}

void writeDriver(ReportStream& out, QStringView title, QStringView service, VersionRecord& version)
{
    if (ReadDriverVersion(service, version))
        out.write(QString(title % u" driver version: " % numbersOf(version) % u"\r\n\r\n"));
}

} // namespace

void ReadFileVersion(QStringView file, VersionRecord& version)
{
    if (file.isEmpty())
        return;
    if (const auto text = fileVersionOf(file))
        version = VersionRecord::parse(*text);
}

bool ReadDriverVersion(QStringView name, VersionRecord& version)
{
    const auto localMachine = machine().registry().localMachine();
    if (!localMachine)
        return false;
    const QString path = u"SYSTEM\\CurrentControlSet\\Services\\"_s % name;
    const auto key = (*localMachine)->openBelow(path, key_access::QueryValue);
    if (!key)
        return false;
    const auto imagePath = (*key)->text(u"ImagePath", std::numeric_limits<qsizetype>::max());
    if (!imagePath)
        return false;
    const QString driver_fname = machine().systemInfo().windowsDirectory() % u'\\' % *imagePath;
    if (const auto text = fileVersionOf(driver_fname)) {
        const auto isPart = [](QChar unit) { return (unit >= u'0' && unit <= u'9') || unit == u'.'; };
        const auto end = std::find_if_not(text->begin(), text->end(), isPart);
        version.setNumbers(VersionRecord::scanNumbers(QStringView(text->begin(), end)));
    }
    return true;
}

void DescribeExecutables(ReportStream& out, QStringView path)
{
    if (path.startsWith(u'"'))
        path = path.mid(1);
    if (path.endsWith(u'"'))
        path.chop(1);
    const QString folder = folderOf(path).toString();
    const auto find = [&folder](const QString& pattern) {
        const auto names = machine().files().find(folder + pattern);
        return names ? *names : QStringList();
    };
    writeListing(out, folder, find, fileVersionOf);
}

void describeOwnExecutables(ReportStream& out, QStringView path)
{
    if (path != QCoreApplication::applicationFilePath()) {
        DescribeExecutables(out, path);
        return;
    }
    const QString folder = folderOf(path).toString();
    const auto find = [&folder](const QString& pattern) {
        return QDir(folder).entryList({pattern}, QDir::Files | QDir::Hidden, QDir::Name | QDir::IgnoreCase);
    };
    const auto versionOf = [](const QString& file) {
        const auto text = machine().systemInfo().programVersion(file);
        return text ? std::optional(text->left(VersionUnits)) : std::nullopt;
    };
    writeListing(out, folder, find, versionOf);
}

void writeExecutableSections(ReportStream& out, QStringView guiExecutablePath, QStringView executablePath)
{
    out.write(u"-------------------- QUORIL GUI Executable Description --------------------\r\n");
    describeOwnExecutables(out, guiExecutablePath);
    out.write(u"-------------------- QUORIL Executable Description --------------------\r\n");
    DescribeExecutables(out, executablePath);
    out.write(u"-------------------- QUORIL DRIVERS --------------------\r\n");
    VersionRecord version;
    writeDriver(out, u"NDIS", u"Packet", version);
    writeDriver(out, u"MUX", u"MUXP", version);
    out.write(u"-------------------- End of DRIVERS Description --------------------\r\n\r\n");
}

} // namespace quoril
