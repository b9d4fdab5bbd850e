// Reads of stored data, each beside what they are measured against, in one run.
//
//     GetValueAt of a vector     at most 5 times a look-up in a QMap of four keys
//     GetValueRange of 1e7       at most 1.2 times a memcpy of the same doubles into fresh memory
#include "foundations/variant/Variant.h"
#include "variables/Variable.h"

#include <benchmark/benchmark.h>

#include <QMap>
#include <QString>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <thread>
#include <vector>

namespace {
using Brindle::Quay::BVariant;
using Orrery::Variable;

// Shared pointers and the C library take short cuts until a process has started its first thread; a host has.
const bool s_threaded = [] {
    std::thread([] {}).join();
    return true;
}();

std::vector<double> countingUp(std::int64_t count)
{
    std::vector<double> values(static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = static_cast<double>(i);
    return values;
}

// The four names that a saved variable has most often.
void BM_LookUpInQMapOfFour(benchmark::State& state)
{
    QMap<QString, int> map;
    const QString names[] = {QStringLiteral("Data"), QStringLiteral("Indep"), QStringLiteral("Unit"),
                             QStringLiteral("VariableStrategy")};
    for (int i = 0; i < 4; ++i)
        map.insert(names[i], i);
    std::size_t next = 0;
    for (auto _ : state) {
        const auto found = map.constFind(names[next++ % 4]);
        benchmark::DoNotOptimize(found.value());
    }
}
BENCHMARK(BM_LookUpInQMapOfFour);

void BM_GetValueAt(benchmark::State& state)
{
    Variable variable(QStringLiteral("x"), BVariant(countingUp(1000)));
    variable.SetProperty(QStringLiteral("Indep"), BVariant(0.0));
    variable.SetProperty(QStringLiteral("Unit"), BVariant(0.0));
    BVariant out;
    std::uint64_t offset = 0;
    double sum = 0;
    for (auto _ : state) {
        if (variable.GetValueAt(&out, offset++ % 1000) < 0)
            state.SkipWithError("an offset can't be read");
        sum += *static_cast<const double*>(out.constData());
    }
    benchmark::DoNotOptimize(sum);
}
BENCHMARK(BM_GetValueAt);

void BM_MemcpyIntoFreshMemory(benchmark::State& state)
{
    const std::vector<double> source = countingUp(state.range(0) + 1);
    const std::size_t bytes = static_cast<std::size_t>(state.range(0)) * sizeof(double);
    for (auto _ : state) {
        const std::unique_ptr<void, decltype(&std::free)> fresh(std::malloc(bytes), &std::free);
        std::memcpy(fresh.get(), source.data() + 1, bytes);
        benchmark::DoNotOptimize(fresh.get());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
}
BENCHMARK(BM_MemcpyIntoFreshMemory)->Arg(1'000)->Arg(10'000'000);

// One more element than is read, so that the whole array isn't simply shared.
void BM_GetValueRange(benchmark::State& state)
{
    const std::uint64_t count = static_cast<std::uint64_t>(state.range(0));
    const Variable variable(QStringLiteral("x"), BVariant(countingUp(state.range(0) + 1)));
    for (auto _ : state) {
        BVariant out;
        if (variable.GetValueRange(&out, 1, count + 1) < 0 || out.elementCount() != count)
            state.SkipWithError("the range can't be read");
        benchmark::DoNotOptimize(out.constData());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * state.range(0) * static_cast<std::int64_t>(sizeof(double)));
}
BENCHMARK(BM_GetValueRange)->Arg(1'000)->Arg(10'000'000);

} // namespace
