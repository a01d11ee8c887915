// The catalogue scan over a machine's hive: N instances with all settings among as many other services, from
// the opening of the machine on.

#include "formats/regf_hive.h"
#include "platform/tree/tree_machine.h"
#include "shell/quoril_manager_doc.h"
#include "shell/service_catalogue.h"

#include <benchmark/benchmark.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace {

using namespace quoril;
using namespace Qt::StringLiterals;

QByteArray units(QStringView text)
{
    return QByteArray(reinterpret_cast<const char*>(text.utf16()), text.size() * 2) + QByteArray(2, '\0');
}

void set(regf::Key& key, QStringView path, QStringView name, QStringView text)
{
    regf::Key* const place = *key.addPath(path, 0);
    if (!place->setValue(name, value_type::String, units(text), 0))
        std::abort();
}

void addInstance(regf::Key& services, const QString& name, bool withDevices)
{
    set(services, name, u"Group", u"TargetPlatformEmulator");
    set(services, name, u"ImagePath", u"C:\\Program Files\\Quoril\\quoril-emulator.exe");
    const QString parameters = name + u"\\Parameters"_s;
    set(services, parameters, u"TargetPlatformEmulator", u"quoril_64");
    set(services, parameters, u"Home", u"C:\\Emulators");
    for (const QStringView setting :
        {u"session\\log", u"ram\\size", u"cpu\\ace_enable", u"rom\\container", u"toy\\container"})
        set(services, parameters + u'\\' + setting.toString() + u"\\0"_s, u"Value", u"setting.txt");
    if (!withDevices)
        return;
    for (const QStringView device : {u"pka_0", u"pkb_0", u"dua", u"xqa"}) {
        const QString component = parameters + u'\\' + device.toString();
        set(services, component, u"Class", u"virtual_scsi_disk");
        for (int unit = 0; unit < 4; ++unit) {
            const QString place = component + u"\\container\\"_s + QString::number(unit);
            set(services, place, u"Class", u"virtual_scsi_disk");
            set(services, place, u"Value", u"C:\\Emulators\\disk.vdisk");
        }
    }
}

void writeMachine(const QTemporaryDir& folder, qint64 count, bool withDevices)
{
    const QString config = folder.filePath(u"Windows/System32/config"_s);
    QDir().mkpath(config);
    regf::Hive hive = regf::Hive::create(u"SYSTEM"_s);
    regf::Key& select = **hive.root().addPath(u"Select", 0);
    if (!select.setValue(u"Current", value_type::DWord, QByteArray("\1\0\0\0", 4), 0))
        std::abort();
    regf::Key& services = **hive.root().addPath(u"ControlSet001\\Services", 0);
    for (qint64 i = 0; i < count; ++i) {
        addInstance(services, u"Emulator%1"_s.arg(i, 6, 10, QChar(u'0')), withDevices);
        set(services, u"Other%1"_s.arg(i, 6, 10, QChar(u'0')), u"Group", u"Network");
    }
    QFile file(config + u"/SYSTEM"_s);
    if (!file.open(QIODevice::WriteOnly))
        std::abort();
    file.write(*hive.serialize(0));
}

void BM_Scan(benchmark::State& state)
{
    const QTemporaryDir folder;
    writeMachine(folder, state.range(0), state.range(1) != 0);
    for (auto run : state) {
        TreeMachine machine(folder.path());
        const ScopedMachine inForce(machine);
        CQuorilManagerDoc document;
        if (!ScanServices(document) || qint64(document.m_services.size()) != state.range(0))
            state.SkipWithError("the scan missed services");
    }
    state.SetComplexityN(state.range(0));
}

BENCHMARK(BM_Scan)
    ->ArgNames({"instances", "devices"})
    ->Args({1000, 0})
    ->Args({3000, 0})
    ->Args({10000, 0})
    ->Args({1000, 1})
    ->Args({10000, 1})
    ->Unit(benchmark::kMillisecond);

} // namespace
