#include "report/host_processor.h"

#include "platform/machine.h"
#include "platform/registry.h"
#include "platform/system_info.h"
#include "services/service_walk.h"

#include <QStringBuilder>
#include <QStringList>

#include <limits>
#include <optional>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

constexpr QStringView ProcessorPath = u"HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0";

std::optional<QString> stringOf(const RegistryKey& key, QStringView name)
{
    const auto value = key.value(name, std::numeric_limits<qsizetype>::max());
    if (!value || value->type != value_type::String)
        return std::nullopt;
    return value->text();
}

QString describeByRegistry(const RegistryKey& key, qint32 cpuSpeed)
{
    const auto name = stringOf(key, u"ProcessorNameString");
    QStringList items;
    for (const QStringView item : {u"VendorIdentifier", u"Identifier"}) {
        if (const auto text = stringOf(key, item))
            items.append(*text);
    }
    items.append(u"~%1MHz"_s.arg(cpuSpeed));
    const QString list = items.join(u", "_s);
    return name ? QString(*name % u". . . (" % list % u')') : list;
}

QString describeByRecord(const ProcessorInfo& processors)
{
    switch (processors.architecture) {
    case processor_architecture::Intel:
        if (processors.level == 3 || processors.level == 4) {
            const QString revision = QString::number(processors.revision, 16).toUpper();
            return u"detected Intel(R) 80"_s % QString::number(processors.level) % u"86, Revision "
                % revision.rightJustified(4, u'0');
        }
        return u"detected Intel(R) Pentium(R), Family %1, Model %2, Stepping %3"_s.arg(processors.level)
            .arg(processors.revision >> 8)
            .arg(processors.revision & 0xFF);
    case processor_architecture::Mips:
        return u"detected MIPS"_s;
    case processor_architecture::Alpha:
        return u"detected Alpha/AXP"_s;
    case processor_architecture::PowerPc:
        return u"detected PowerPC"_s;
    case processor_architecture::Itanium:
        return u"detected Intel/IA64"_s;
    default:
        return u"unknown or AMD"_s;
    }
}

} // namespace

qint32 readCpuSpeed()
{
    const auto localMachine = machine().registry().localMachine();
    if (!localMachine)
        return 0;
    const auto key = openPath(**localMachine, ProcessorPath, registryAccess);
    if (!key)
        return 0;
    const auto value = (*key)->value(u"~MHz", sizeof(quint32));
    if (!value || value->type != value_type::DWord)
        return 0;
    quint32 megahertz = 0;
    for (qsizetype i = value->data.size(); i > 0; --i)
        megahertz = megahertz << 8 | quint8(value->data[i - 1]);
    return megahertz == 0 ? 0 : qint32((megahertz + 50) / 100 * 100);
}

QString describeProcessor(const ProcessorInfo& processors, qint32 cpuSpeed)
{
    const auto localMachine = machine().registry().localMachine();
    // Unlike the speed's key in one step, so that it takes rights to nothing above it.
    const auto key = localMachine ? (*localMachine)->openBelow(ProcessorPath, registryAccess())
                                  : Result<RegistryKeyHandle>(localMachine.failure());
    return u"Host CPU: "_s % (key ? describeByRegistry(**key, cpuSpeed) : describeByRecord(processors));
}

} // namespace quoril
