#include "report/hardware_sections.h"

#include "platform/machine.h"
#include "platform/system_info.h"
#include "report/executable_sections.h"
#include "report/host_processor.h"
#include "report/operating_system_name.h"
#include "report/report_stream.h"

#include <QStringBuilder>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

struct HardwareBlock
{
    QString computerName;
    qint32 processorCount = 0;
    qint32 CpuSpeed = 0; ///< in MHz
    qint32 PhysicalMemory = 0; ///< in megabytes
    QString cpu_version;
    QString os_version;
};

/// Megabytes, rounded up; kilobytes are counted in 32 bits.
qint32 megabytes(quint64 bytes)
{
    return qint32((quint32(bytes >> 10) + 1023) >> 10);
}

HardwareBlock gather()
{
    const SystemInfo& system = machine().systemInfo();
    HardwareBlock block;
    const auto name = system.computerName();
    block.computerName = name ? *name : u"Unknown local computer name"_s;
    const ProcessorInfo processors = system.processors();
    block.processorCount = qint32(processors.count);
    block.CpuSpeed = readCpuSpeed();
    const auto memory = system.physicalMemory();
    block.PhysicalMemory = memory ? megabytes(*memory) : 0;
    if (block.processorCount > 0)
        block.cpu_version = describeProcessor(processors, block.CpuSpeed);
    block.os_version = u"Operating system: "_s % DescribeOperatingSystem(system.version());
    return block;
}

void writeBlock(ReportStream& out, const HardwareBlock& block)
{
    out.write(u"-------------------- Hardware configuration --------------------\r\n");
    out.write(QString(u"Computer id: \"" % block.computerName % u"\"\r\n"));
    out.write(QString(block.os_version % u"\r\n\r\n"));
    out.write(u"Host CPU numbers: %1\r\n"_s.arg(block.processorCount));
    out.write(block.cpu_version.isEmpty() ? u"Host CPU: <UNKNOWN>"_s : block.cpu_version);
    out.write(u"\r\n");
    out.write(u"CPU running at %1 Mhz\r\n"_s.arg(block.CpuSpeed));
    out.write(u"Physical memory size: %1Mb (total)\r\n"_s.arg(block.PhysicalMemory));
    out.write(u"-------------------- End of hardware configuration --------------------\r\n\r\n");
}

} // namespace

void writeHardwareSections(ReportStream& out, const HardwareSections& wanted)
{
    const HardwareBlock block = gather();
    if (wanted.executablesWanted)
        writeExecutableSections(out, wanted.guiExecutablePath, wanted.executablePath);
    writeBlock(out, block);
}

} // namespace quoril
