// Registry hives: the catalogue's scan, look-up by name, reading and writing of the whole.

#include "formats/regf_hive.h"

#include <benchmark/benchmark.h>

#include <array>

using namespace quoril;
using namespace Qt::StringLiterals;

namespace {

constexpr QStringView Group = u"TargetPlatformEmulator";
constexpr std::array<QStringView, 5> Settings{
    u"session\\log\\0", u"ram\\size\\0", u"cpu\\ace_enable\\0", u"rom\\container\\0", u"toy\\container\\0"};

QByteArray text(QStringView units)
{
    QByteArray data(reinterpret_cast<const char*>(units.utf16()), units.size() * 2);
    return data.append(2, '\0');
}

/// Services as a machine has them: every second one is an emulator with all its settings.
QByteArray sampleHive(int services)
{
    regf::Hive hive = regf::Hive::create(u"ROOT"_s);
    regf::Key* all = *hive.root().addPath(u"ControlSet001\\Services", 1);
    for (int i = 0; i < services; ++i) {
        regf::Key* service = *all->addChild(u"Service%1"_s.arg(i, 6, 10, QLatin1Char('0')), 1);
        (void)service->setValue(u"ImagePath", 2, text(u"C:\\Program Files\\Emulator\\emulator.exe -s"), 1);
        (void)service->setValue(u"DisplayName", 1, text(u"One of many services"), 1);
        (void)service->setValue(u"Start", 4, QByteArray(4, '\2'), 1);
        (void)service->setValue(u"Type", 4, QByteArray(4, '\20'), 1);
        (void)service->setValue(u"Group", 1, text(i % 2 == 0 ? Group : u"Network"), 1);
        if (i % 2 != 0)
            continue;
        regf::Key* parameters = *service->addChild(u"Parameters", 1);
        (void)parameters->setValue(Group, 1, text(u"Model 4"), 1);
        for (const QStringView path : Settings)
            (void)(*parameters->addPath(path, 1))->setValue(u"Value", 1, text(u"emulator.log"), 1);
    }
    return *hive.serialize(1);
}

std::size_t scan(const QByteArray& bytes)
{
    const Result<regf::Hive> hive = regf::Hive::parse(bytes);
    const regf::Key* services = hive->root().find(u"ControlSet001\\Services");
    std::size_t found = 0;
    for (std::size_t i = 0; i < services->childCount(); ++i) {
        const regf::Key* service = services->childAt(i);
        const regf::Value* group = service->value(u"Group");
        if (!group || group->data != text(Group))
            continue;
        const regf::Key* parameters = service->child(u"Parameters");
        for (const QStringView path : Settings)
            found += parameters->find(path)->value(u"Value") != nullptr;
    }
    return found;
}

void Scan(benchmark::State& state)
{
    const QByteArray bytes = sampleHive(int(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(scan(bytes));
    state.SetComplexityN(state.range(0));
}
BENCHMARK(Scan)->Arg(1000)->Arg(3000)->Arg(10000)->Arg(20000)->Unit(benchmark::kMillisecond)->Complexity();

void OpenByName(benchmark::State& state)
{
    const Result<regf::Hive> hive = regf::Hive::parse(sampleHive(int(state.range(0))));
    const regf::Key* services = hive->root().find(u"ControlSet001\\Services");
    QStringList names;
    for (int i = 0; i < 1000; ++i)
        names += u"SERVICE%1"_s.arg(i * 7 % int(state.range(0)), 6, 10, QLatin1Char('0'));
    qsizetype next = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(services->child(names[next++ % names.size()]));
}
BENCHMARK(OpenByName)->Arg(1000)->Arg(10000);

void Build(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(sampleHive(int(state.range(0))));
}
BENCHMARK(Build)->Arg(10000)->Unit(benchmark::kMillisecond);

void Parse(benchmark::State& state)
{
    const QByteArray bytes = sampleHive(int(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(regf::Hive::parse(bytes));
}
BENCHMARK(Parse)->Arg(20000)->Unit(benchmark::kMicrosecond);

void ReadAll(benchmark::State& state)
{
    const QByteArray bytes = sampleHive(int(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(regf::Hive::parse(bytes)->rewritable());
    state.SetBytesProcessed(int64_t(state.iterations()) * bytes.size());
}
BENCHMARK(ReadAll)->Arg(10000)->Unit(benchmark::kMillisecond);

void Serialize(benchmark::State& state)
{
    const Result<regf::Hive> hive = regf::Hive::parse(sampleHive(int(state.range(0))));
    for (auto _ : state)
        benchmark::DoNotOptimize(hive->serialize(1));
}
BENCHMARK(Serialize)->Arg(10000)->Unit(benchmark::kMillisecond);

} // namespace
