// What 100,000 scalar variables in one tree cost: time to make each, and bytes of heap that each holds, at most
// 1.5 KB. The bytes are what the allocator has given out, its own rounding included.

#include "foundations/property/PropertyObject.h"
#include "tests/support/CountingAllocator.h"
#include "variables/Variable.h"

#include <QString>
#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace {
using Brindle::Quay::BVariant;
using Orrery::PropertyObject;
using Orrery::Variable;

std::vector<QString> makeNames(std::int64_t count)
{
    std::vector<QString> names;
    for (std::int64_t i = 0; i < count; ++i)
        names.push_back(QStringLiteral("variable%1").arg(i));
    return names;
}

void BM_CreateVariables(benchmark::State& state)
{
    const std::vector<QString> names = makeNames(state.range(0));
    std::int64_t bytes = 0;
    for (auto _ : state) {
        const TestSupport::AllocationCount allocations;
        auto tree = std::make_unique<PropertyObject>();
        for (const QString& name : names) {
            auto variable = std::make_unique<Variable>(name, BVariant(1.5));
            if (tree->InsertProperty(variable.get()) < 0)
                state.SkipWithError("a variable can't be put in");
            variable.release();
        }
        bytes = allocations.liveBytes();
        state.PauseTiming();
        tree.reset();
        state.ResumeTiming();
    }
    const auto count = static_cast<double>(state.range(0));
    state.counters["each"] = benchmark::Counter(count, benchmark::Counter::kIsIterationInvariantRate |
                                                           benchmark::Counter::kInvert);
    state.counters["bytes_each"] = static_cast<double>(bytes) / count;
}

} // namespace

BENCHMARK(BM_CreateVariables)->Arg(100000)->Unit(benchmark::kMillisecond);
