#include "platform/tree/hardware_hive.h"

#include "platform/registry.h"
#include "platform/tree/hive_store.h"

#include <QFile>
#include <QMap>
#include <QSysInfo>
#include <QtEndian>

#include <cmath>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

using Facts = QMap<QString, QString>;

QList<Facts> processorsOf(const QByteArray& cpuInfo)
{
    QList<Facts> processors;
    for (const QString& line : QString::fromUtf8(cpuInfo).split(u'\n')) {
        const qsizetype colon = line.indexOf(u':');
        if (colon < 0)
            continue;
        const QString name = line.left(colon).trimmed();
        // Some systems end the list with facts about the board, which have a heading of their own.
        if (name == u"processor")
            processors.append(Facts());
        if (!processors.isEmpty())
            processors.last().insert(name, line.mid(colon + 1).trimmed());
    }
    if (processors.isEmpty())
        processors.append(Facts());
    return processors;
}

/// "Intel64 Family 6 Model 85 Stepping 7", as the system composes it from what the processor says of itself.
QString identifierOf(const Facts& facts)
{
    if (facts.contains(u"CPU part"_s)) {
        return u"ARMv%1 (64-bit) Family %1 Model %2 Revision %3"_s.arg(
            facts.value(u"CPU architecture"_s, u"8"_s), facts.value(u"CPU part"_s).remove(u"0x"_s).toUpper(),
            facts.value(u"CPU revision"_s, u"0"_s));
    }
    const QString vendor = facts.value(u"vendor_id"_s);
    const bool is64 = QSysInfo::currentCpuArchitecture().endsWith(u"64"_s);
    const QString kind = !is64 ? u"x86"_s : vendor == u"GenuineIntel" ? u"Intel64"_s : u"AMD64"_s;
    return u"%1 Family %2 Model %3 Stepping %4"_s.arg(kind, facts.value(u"cpu family"_s, u"0"_s),
        facts.value(u"model"_s, u"0"_s), facts.value(u"stepping"_s, u"0"_s));
}

QByteArray textData(const QString& text)
{
    QByteArray data((text.size() + 1) * 2, '\0');
    for (qsizetype i = 0; i < text.size(); ++i)
        qToLittleEndian<quint16>(text[i].unicode(), data.data() + 2 * i);
    return data;
}

QByteArray numberData(quint32 number)
{
    QByteArray data(sizeof number, '\0');
    qToLittleEndian(number, data.data());
    return data;
}

void describe(regf::Key& key, const Facts& facts, quint64 filetime)
{
    const auto setText = [&](QStringView name, const QString& text) {
        if (!text.isEmpty())
            static_cast<void>(key.setValue(name, value_type::String, textData(text), filetime));
    };
    setText(u"ProcessorNameString", facts.value(u"model name"_s, QSysInfo::currentCpuArchitecture()));
    setText(u"Identifier", identifierOf(facts));
    setText(u"VendorIdentifier", facts.value(u"vendor_id"_s));
    const double megahertz = facts.value(u"cpu MHz"_s).toDouble();
    if (megahertz > 0 && megahertz < 1e9) {
        const auto rounded = static_cast<quint32>(std::lround(megahertz));
        static_cast<void>(key.setValue(u"~MHz", value_type::DWord, numberData(rounded), filetime));
    }
}

} // namespace

regf::Hive makeHardwareHive(const QByteArray& cpuInfo)
{
    const quint64 filetime = currentFiletime();
    regf::Hive hive = regf::Hive::create(u"HARDWARE"_s, filetime);
    qsizetype number = 0;
    for (const Facts& facts : processorsOf(cpuInfo)) {
        const QString path = u"DESCRIPTION\\System\\CentralProcessor\\%1"_s.arg(number++);
        const Result<regf::Key*> key = hive.root().addPath(path, filetime);
        if (key)
            describe(**key, facts, filetime);
    }
    return hive;
}

QByteArray hostCpuInfo()
{
    constexpr qint64 enough = 1 << 20;
    QFile file(u"/proc/cpuinfo"_s);
    return file.open(QIODevice::ReadOnly) ? file.read(enough) : QByteArray();
}

} // namespace quoril
